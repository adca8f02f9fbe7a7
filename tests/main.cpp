#include <QGuiApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    // Timers, watchers, tasks and fonts need an application.
    QGuiApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
