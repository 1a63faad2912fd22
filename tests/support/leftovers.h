#pragma once

// Every process a test starts must end with its test. The test program works in a folder of its
// own, and every process it starts inherits that working folder, codecs included (they run with
// no environment, in process groups of their own, and outlive their parent when it dies). After
// each test, whatever still works there is named, killed and fails the program.

#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <signal.h>
#include <unistd.h>

namespace kv::test {

class Leftovers : public ::testing::EmptyTestEventListener
{
public:
    // Makes the folder the working folder; the listener then belongs to gtest.
    static Leftovers &install()
    {
        auto *leftovers = new Leftovers;
        ::testing::UnitTest::GetInstance()->listeners().Append(leftovers);
        return *leftovers;
    }

    bool found() const { return m_found; }

    void OnTestEnd(const ::testing::TestInfo &test) override
    {
        // A process killed at the very end of a test may take a moment to go.
        for (int i = 0; i < 100 && !survivors().empty(); ++i)
            QThread::msleep(20);
        // Killed more than once: a shell may start one more child between the look and the kill.
        for (int round = 0; round < 5; ++round) {
            const std::vector<std::pair<pid_t, std::string>> alive = survivors();
            if (alive.empty())
                break;
            for (const auto &[pid, command] : alive) {
                if (round == 0)
                    std::fprintf(stderr, "%s.%s left process %d running: %s\n", test.test_suite_name(), test.name(),
                                 static_cast<int>(pid), command.c_str());
                ::kill(pid, SIGKILL);
            }
            m_found = true;
            QThread::msleep(50);
        }
    }

private:
    Leftovers()
        : m_folder(QDir::tempPath() + QStringLiteral("/kv-test-XXXXXX"))
        , m_path(QFile::encodeName(QDir(m_folder.path()).canonicalPath()).toStdString())
    {
        if (!m_folder.isValid() || ::chdir(m_path.c_str()) != 0) {
            std::fprintf(stderr, "no working folder of its own for the test program\n");
            m_found = true;
        }
    }

    // Processes other than this one working in the folder or below it, with their command lines.
    std::vector<std::pair<pid_t, std::string>> survivors() const
    {
        std::vector<std::pair<pid_t, std::string>> alive;
        const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        for (const QString &entry : entries) {
            bool number = false;
            const pid_t pid = static_cast<pid_t>(entry.toInt(&number));
            if (!number || pid == ::getpid())
                continue;
            // A process that has ended (a zombie) has no working folder to read.
            char cwd[4096];
            const std::string link = "/proc/" + std::to_string(pid) + "/cwd";
            const ssize_t n = ::readlink(link.c_str(), cwd, sizeof cwd);
            if (n <= 0)
                continue;
            const std::string where(cwd, static_cast<size_t>(n));
            if (where != m_path && where.rfind(m_path + '/', 0) != 0)
                continue;
            QFile cmdline(QStringLiteral("/proc/%1/cmdline").arg(pid));
            std::string command = cmdline.open(QIODevice::ReadOnly) ? cmdline.readAll().toStdString() : std::string();
            for (char &c : command)
                c = c == '\0' ? ' ' : c;
            alive.emplace_back(pid, command);
        }
        return alive;
    }

    QTemporaryDir m_folder;
    std::string m_path;
    bool m_found = false;
};

} // namespace kv::test
