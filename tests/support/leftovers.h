#pragma once

// Every process a test starts must end with its test. The test program works in a folder of its
// own, and every process it starts inherits that working folder, codecs included (they run with
// no environment, in process groups of their own, and outlive their parent when it dies). After
// each test, whatever still works there is named, killed and fails the program.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include <QDir>
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
            const auto alive = survivors();
            for (const auto &[pid, command] : alive) {
                if (round == 0)
                    std::fprintf(stderr, "%s.%s left process %d running: %s\n", test.test_suite_name(), test.name(), pid, command.c_str());
                ::kill(pid, SIGKILL);
            }
            m_found = m_found || !alive.empty();
            QThread::msleep(alive.empty() ? 0 : 50);
        }
    }

private:
    Leftovers() : m_folder(QDir::tempPath() + QStringLiteral("/kv-test-XXXXXX"))
    {
        std::error_code error;
        m_path = std::filesystem::canonical(m_folder.path().toStdString(), error);
        if (!m_folder.isValid() || ::chdir(m_path.c_str()) != 0) {
            std::fprintf(stderr, "no working folder of its own for the test program\n");
            m_found = true;
        }
    }

    // Processes other than this one working in the folder or below it, with their command lines.
    // One that has ended (a zombie) has no working folder to read.
    std::map<int, std::string> survivors() const
    {
        std::map<int, std::string> alive;
        for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
            const int pid = std::atoi(entry.path().filename().c_str());
            std::error_code error;
            const std::filesystem::path where = std::filesystem::read_symlink(entry.path() / "cwd", error);
            const bool inside = std::mismatch(m_path.begin(), m_path.end(), where.begin(), where.end()).first == m_path.end();
            if (pid <= 0 || pid == ::getpid() || error || !inside)
                continue;
            std::ifstream cmdline(entry.path() / "cmdline");
            std::string command(std::istreambuf_iterator<char>(cmdline), {});
            std::replace(command.begin(), command.end(), '\0', ' ');
            alive.emplace(pid, command);
        }
        return alive;
    }

    QTemporaryDir m_folder;
    std::filesystem::path m_path;
    bool m_found = false;
};

} // namespace kv::test
