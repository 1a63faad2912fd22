#include <gtest/gtest.h>

#include "support/leftovers.h"

// The window's tests, which link the widgets, need a QApplication; the others a core one.
#ifdef QT_WIDGETS_LIB
#include <QApplication>
using TestApplication = QApplication;
#else
#include <QCoreApplication>
using TestApplication = QCoreApplication;
#endif

int main(int argc, char **argv)
{
    TestApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    const kv::test::Leftovers &leftovers = kv::test::Leftovers::install();
    const int failed = RUN_ALL_TESTS();
    return leftovers.found() ? 1 : failed;
}
