#include <gtest/gtest.h>

#include <cstring>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "clifixtures.h"
#include "support/qtprinters.h"

using namespace Qt::StringLiterals;

// A configuration that cannot be read is named for what it is; a FIFO is never waited on.
TEST(Output, ConfigurationThatIsNotAFileSaysWhatItIs)
{
    QTemporaryDir dir;
    ASSERT_EQ(::mkfifo(QFile::encodeName(dir.filePath(u"fifo"_s)).constData(), 0600), 0);
    // And the socket a program left behind.
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, QFile::encodeName(dir.filePath(u"socket"_s)).constData(), sizeof address.sun_path - 1);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    ::close(listener);
    ASSERT_EQ(::symlink("loop", QFile::encodeName(dir.filePath(u"loop"_s)).constData()), 0);
    const struct { QString path; const char *why; } cases[] = {
        {dir.path(), "a folder"},
        {dir.filePath(u"fifo"_s), "a FIFO"},
        {u"/dev/zero"_s, "a device"},
        {dir.filePath(u"socket"_s), "a socket"},
        {dir.filePath(u"none.cfg"_s), "missing"},
        {dir.filePath(u"loop"_s), "not readable: Too many levels of symbolic links"},
    };
    for (const auto &c : cases) {
        const CliResult r = runCli({u"options"_s, u"--config"_s, c.path});
        EXPECT_EQ(r.status, 0) << c.why;
        EXPECT_EQ(r.err, u"kestrelvane-cli: "_s + c.path + u" not read ("_s + QLatin1String(c.why) + u"); using the defaults\n"_s);
        EXPECT_EQ(r.out.count(u'\n'), 3) << c.why;
    }
    // A file the user may not read is not missing.
    const QString locked = dir.filePath(u"locked.cfg"_s);
    write(locked, "x");
    ::chmod(QFile::encodeName(locked).constData(), 0);
    ::chmod(QFile::encodeName(dir.path()).constData(), 0755);
    const CliResult r = runCli({u"options"_s, u"--config"_s, locked}, {.unprivileged = true});
    EXPECT_EQ(r.err, u"kestrelvane-cli: "_s + locked + u" not read (not readable: Permission denied); using the defaults\n"_s);
}
