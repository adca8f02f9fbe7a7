#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    // Tasks need an event loop to resume in.
    QCoreApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
