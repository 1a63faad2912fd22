#include <gtest/gtest.h>

#include <QApplication>

#include "support/leftovers.h"

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    const kv::test::Leftovers &leftovers = kv::test::Leftovers::install();
    const int failed = RUN_ALL_TESTS();
    return leftovers.found() ? 1 : failed;
}
