#pragma once

#include <functional>
#include <vector>

#include <QString>
#include <QStringList>

namespace kv::cli {

// Exit statuses shared by every subcommand.
enum ExitStatus { ExitOk = 0, ExitFailedJobs = 1, ExitUsage = 2, ExitNoJobs = 3, ExitSignalBase = 128 };

struct Command
{
    QString name;
    QString synopsis; // one usage line, without the program name
    QString help;     // the text of "kestrelvane-cli NAME --help"
    std::function<int(const QStringList &args)> run; // args after the command name
};

// Subcommands register themselves from their own source file.
std::vector<Command> &commands();

struct Registration
{
    explicit Registration(Command command) { commands().push_back(std::move(command)); }
};

// UTF-8 output helpers; a byte of a name that is not UTF-8 is written as U+FFFD.
void out(const QString &text);
void err(const QString &text);

// Folder of the running executable, ending in "/".
QString programFolder();
// Where the configuration file is read from: the same place the window uses.
QString configFile();

// Prints the usage of one command on standard error and returns ExitUsage.
int usageError(const Command &command, const QString &problem);

} // namespace kv::cli
