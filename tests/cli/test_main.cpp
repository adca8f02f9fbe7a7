#include <QCoreApplication>

#include <gtest/gtest.h>

// Commands run on the main thread's event loop, so it needs an application.
int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
