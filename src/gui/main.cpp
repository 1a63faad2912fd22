// kestrelvane: the window. Start-up runs in the controller's order before the window is shown.

#include <cstdio>

#include <QApplication>
#include <QCommandLineParser>
#include <QStandardPaths>

#include "app/maincontroller.h"
#include "gui/guiplatform.h"
#include "gui/mainwindow.h"
#include "platform/posix/posixclock.h"
#include "platform/posix/posixfiles.h"
#include "platform/nativenames.h"
#include "platform/posix/posixfolders.h"
#include "platform/posix/posixinstancelock.h"
#include "platform/posix/posixpaths.h"
#include "platform/posix/posixprocesses.h"
#include "platform/posix/posixvolumes.h"

namespace {

bool displayAvailable()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        || !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

} // namespace

int main(int argc, char **argv)
{
    // The arguments are read before the application object, so --help works without a display.
    QStringList args;
    for (int i = 0; i < argc; ++i)
        args.append(kv::nameFromBytes(argv[i])); // a folder name need not be valid UTF-8
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Lists audio files with what their headers tell and converts them "
                                                    "between WAV, MP3, Ogg Vorbis and Musepack."));
    const QCommandLineOption help = parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("FOLDER"), QStringLiteral("Folder to open instead of the last one shown."),
                                 QStringLiteral("[FOLDER]"));
    if (!parser.parse(args) || parser.positionalArguments().size() > 1) {
        std::fprintf(stderr, "kestrelvane: %s\nusage: kestrelvane [FOLDER]\n",
                     parser.errorText().isEmpty() ? "only one FOLDER can be opened" : qPrintable(parser.errorText()));
        return 2;
    }
    if (parser.isSet(help)) {
        // Without an application object the parser cannot know the program's name.
        std::fputs(qPrintable(parser.helpText().replace(QStringLiteral("<executable_name>"), QStringLiteral("kestrelvane"))),
                   stdout);
        return 0;
    }
    if (!displayAvailable()) {
        std::fputs("kestrelvane: no display to open the window on; kestrelvane-cli lists and converts without one\n",
                   stderr);
        return 1;
    }

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("kestrelvane"));
    QApplication::setApplicationDisplayName(QStringLiteral("Kestrelvane"));
    QApplication::setDesktopFileName(QStringLiteral("io.github.kestrelvane.Kestrelvane"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/kestrelvane.svg")));

    // Not Qt's own answer: it decodes the path lossily when it is not UTF-8.
    QString programFolder = kv::executableFolder();
    if (programFolder.isEmpty())
        programFolder = QApplication::applicationDirPath() + QLatin1Char('/');
    kv::PosixFiles files;
    kv::PosixFolders folders;
    kv::PosixVolumes volumes;
    kv::PosixInstanceLock lock(programFolder);
    kv::PosixProcesses processes;
    kv::PosixProcesses::preferPromptWakeups(); // this thread reaps and starts the codecs
    kv::PosixClock clock;
    kv::GuiMessages messages;
    kv::GuiBusyCursor busy;
    kv::MainController controller(kv::Environment{
        files, folders, volumes, lock, messages, busy,
        kv::headerReaders(files),
        [&processes] { return processes.processorCount(); },
        [](const QString &document) { kv::openDocument(document); },
        &processes, &clock, [] { QApplication::beep(); },
        processes.wakeups()});

    kv::StartOptions options;
    options.programFolder = programFolder;
    options.userConfigFolder = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    options.programFolderWritable = kv::isWritableFolder(programFolder);
    if (!parser.positionalArguments().isEmpty()) {
        // A file given (a desktop's %f can be one) opens the folder that holds it.
        const QString given = kv::absolutePath(parser.positionalArguments().first());
        options.folder = kv::folderToOpen(given, kv::pathKind(given));
    }

    switch (controller.Main(options)) {
    case kv::StartEnd::Running:
        break;
    case kv::StartEnd::AlreadyRunning:
        return 0;
    case kv::StartEnd::CodecsMissing:
    case kv::StartEnd::Failed:
        return 1;
    }
    kv::MainWindow window(controller);
    messages.setParent(&window);
    window.placeWindow();
    window.show();
    // The session's end saves what a close would and leaves no codec or player behind.
    kv::watchSessionEnd(&app, [&controller](int sig) {
        controller.endSession();
        QApplication::exit(128 + sig);
    });
    return QApplication::exec();
}
