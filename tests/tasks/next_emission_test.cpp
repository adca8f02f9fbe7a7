#include "tasks/next_emission.h"

#include <QCoreApplication>
#include <QCoro/QCoroTask>

#include <gtest/gtest.h>

namespace framewright {

namespace {

QCoro::Task<void> countRenaming(QObject* object, int& count)
{
    co_await NextEmission(object, &QObject::objectNameChanged);
    ++count;
}

} // namespace

TEST(NextEmission, ResumesOnceHoweverOftenTheSignalIsEmitted)
{
    QObject object;
    int count = 0;
    countRenaming(&object, count);
    object.setObjectName("one");
    object.setObjectName("two");
    EXPECT_EQ(count, 0) << "not within the emission";
    QCoreApplication::processEvents();
    EXPECT_EQ(count, 1);
    object.setObjectName("three");
    QCoreApplication::processEvents();
    EXPECT_EQ(count, 1);
}

} // namespace framewright
