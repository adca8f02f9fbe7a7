#include <QGuiApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    // Fonts belong to it.
    QGuiApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
