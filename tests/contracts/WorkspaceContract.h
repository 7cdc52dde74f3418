#pragma once

#include "base/NotificationCenter.h"
#include "ports/Workspace.h"
#include "support/Eventually.h"

#include <gtest/gtest.h>

namespace tavrine::test {

/// What every workspace keeps. `Desk` is a desktop without windows at first:
///   Workspace &workspace(); void open(const QString &program) starts a program of that identifier and waits for its
///   window; void activate(const QString &program) brings its window forward; void openSecondWindow(program);
///   void close(const QString &program) ends it.
template <class Desk>
class WorkspaceContract : public testing::Test {
public:
    WorkspaceContract() {
        observer = desk.workspace().notificationCenter().addObserver(
            QLatin1String(Workspace::didDeactivateApplicationNotification), [this](const Notification &notice) {
                const QVariant value = notice.userInfo.value(QLatin1String(Workspace::applicationKey));
                left.append(value.value<RunningApplication>().bundleIdentifier);
            });
    }

    [[nodiscard]] QString frontmost() {
        const auto application = desk.workspace().frontmostApplication();
        return application ? application->bundleIdentifier : QString();
    }
    [[nodiscard]] bool comesToFront(const QString &program) {
        return eventually([&] { return frontmost() == program; });
    }

    const QString first = QStringLiteral("FirstProgram");
    const QString second = QStringLiteral("SecondProgram");
    Desk desk;
    QStringList left;
    NotificationCenter::Token observer;
};

TYPED_TEST_SUITE_P(WorkspaceContract);

TYPED_TEST_P(WorkspaceContract, nothingIsFrontmostOnAnEmptyDesktop) {
    EXPECT_FALSE(this->desk.workspace().frontmostApplication().has_value());
}

TYPED_TEST_P(WorkspaceContract, theProgramWithTheActiveWindowIsFrontmost) {
    this->desk.open(this->first);
    EXPECT_TRUE(this->comesToFront(this->first));
    this->desk.open(this->second);
    EXPECT_TRUE(this->comesToFront(this->second));
    this->desk.activate(this->first);
    EXPECT_TRUE(this->comesToFront(this->first));
}

TYPED_TEST_P(WorkspaceContract, theProgramThatIsLeftIsTold) {
    this->desk.open(this->first);
    ASSERT_TRUE(this->comesToFront(this->first));
    EXPECT_TRUE(this->left.isEmpty());
    this->desk.open(this->second);
    EXPECT_TRUE(eventually([&] { return this->left == QStringList{this->first}; }))
        << qPrintable(this->left.join(u','));
    this->desk.activate(this->first);
    EXPECT_TRUE(eventually([&] {
        return this->left == QStringList({this->first, this->second});
    })) << qPrintable(this->left.join(u','));
}

TYPED_TEST_P(WorkspaceContract, anotherWindowOfTheSameProgramIsNoDeparture) {
    this->desk.open(this->first);
    ASSERT_TRUE(this->comesToFront(this->first));
    const auto before = this->desk.workspace().frontmostApplication();
    this->desk.openSecondWindow(this->first);
    ASSERT_TRUE(eventually([&] {
        const auto now = this->desk.workspace().frontmostApplication();
        return now && now->window != before->window;
    }));
    letPass(std::chrono::milliseconds(100));
    EXPECT_TRUE(this->left.isEmpty()) << qPrintable(this->left.join(u','));
}

TYPED_TEST_P(WorkspaceContract, nothingIsFrontmostAfterTheLastProgramEnded) {
    this->desk.open(this->first);
    ASSERT_TRUE(this->comesToFront(this->first));
    this->desk.close(this->first);
    EXPECT_TRUE(eventually([&] { return !this->desk.workspace().frontmostApplication().has_value(); }));
    EXPECT_TRUE(eventually([&] { return this->left == QStringList{this->first}; }));
}

TYPED_TEST_P(WorkspaceContract, theProgramsWithAWindowAreListedOnceInTheOrderOfTheirComing) {
    EXPECT_TRUE(this->desk.workspace().runningApplications().isEmpty());
    this->desk.open(this->first);
    this->desk.open(this->second);
    ASSERT_TRUE(this->comesToFront(this->second));
    this->desk.activate(this->first);
    this->desk.openSecondWindow(this->first);
    const auto listed = [this] {
        QStringList names;
        for (const RunningApplication &each : this->desk.workspace().runningApplications())
            names.append(each.bundleIdentifier);
        return names;
    };
    EXPECT_TRUE(eventually([&] {
        return listed() == QStringList({this->first, this->second});
    })) << qPrintable(listed().join(u','));
    this->desk.close(this->second);
    EXPECT_TRUE(eventually([&] { return listed() == QStringList{this->first}; }));
}

TYPED_TEST_P(WorkspaceContract, showingNoFilesIsQuiet) {
    this->desk.workspace().activateFileViewerSelecting({});
}

REGISTER_TYPED_TEST_SUITE_P(WorkspaceContract, nothingIsFrontmostOnAnEmptyDesktop,
                            theProgramWithTheActiveWindowIsFrontmost, theProgramThatIsLeftIsTold,
                            anotherWindowOfTheSameProgramIsNoDeparture, nothingIsFrontmostAfterTheLastProgramEnded,
                            theProgramsWithAWindowAreListedOnceInTheOrderOfTheirComing, showingNoFilesIsQuiet);

} // namespace tavrine::test
