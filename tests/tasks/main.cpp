#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    // The editor's timers, watchers and tasks need an event loop to run in.
    QCoreApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
