#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// Runs the built kestrelvane-cli and captures what it printed and how it ended.
struct CliResult
{
    QString out;
    QString err;
    int status = -1;
};

// errOnTerminal: standard error goes to a pseudo-terminal, as when a user runs it in one.
CliResult runCli(const QStringList &args, const char *locale = "C.UTF-8", int timeoutMs = 120000,
                 bool errOnTerminal = false);

// The built binary's path.
QString cliPath();
