#include <QGuiApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    // Fonts are Qt's, and it has them with an application only.
    QGuiApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
