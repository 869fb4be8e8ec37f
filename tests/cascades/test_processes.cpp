// One instance per user, and ends by signals: with other processes of this program.

#include <csignal>

#include <QCoreApplication>
#include <QProcess>
#include <QSignalSpy>
#include <thread>

#include "platform/cascades/single_instance.h"
#include "tests/cascades/fixture.h"

using handset::SingleInstance;

namespace {

constexpr int patience = 20000;

/// Starts this program in a role and waits for its first line.
std::unique_ptr<QProcess> start(const QStringList& arguments, const QByteArray& line) {
  auto process = std::make_unique<QProcess>();
  process->start(QCoreApplication::applicationFilePath(), arguments);
  EXPECT_TRUE(process->waitForReadyRead(patience));
  EXPECT_EQ(process->readLine(), line + '\n');
  return process;
}

}  // namespace

TEST(SingleInstance, SecondTellsTheFirstAndOtherSandboxesAreIndependent) {
  SingleInstance first("/sandbox/a");
  ASSERT_TRUE(first.is_first());
  EXPECT_TRUE(SingleInstance("/sandbox/b").is_first());
  QSignalSpy asked(&first, &SingleInstance::activation_requested);
  QProcess second;
  second.start(QCoreApplication::applicationFilePath(), role("hold", {"/sandbox/a"}));
  ASSERT_TRUE(QTest::qWaitFor([&] { return second.state() == QProcess::NotRunning; }, patience));
  EXPECT_EQ(second.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(second.exitCode(), 0);
  EXPECT_EQ(second.readAllStandardOutput(), "second\n");
  EXPECT_EQ(asked.count(), 1);
}

TEST(SingleInstance, WhatAKilledProcessLeftIsNoObstacle) {
  const auto killed = start(role("hold", {"/sandbox/c"}), "first");
  killed->kill();
  ASSERT_TRUE(killed->waitForFinished(patience));
  const SingleInstance next("/sandbox/c");
  EXPECT_TRUE(next.is_first());
}

TEST(SingleInstance, PlaceIsFreeAfterTheEnd) {
  { const SingleInstance first("/sandbox/d"); }
  EXPECT_TRUE(SingleInstance("/sandbox/d").is_first());
}

TEST(EndSignals, EndTheLoopAndDoNotKillTheTeardown) {
  for (const int signal : {SIGTERM, SIGINT}) {
    const auto process = start(role("wait"), "running");
    ASSERT_EQ(kill(static_cast<pid_t>(process->processId()), signal), 0);
    ASSERT_TRUE(process->waitForReadyRead(patience));
    EXPECT_EQ(process->readLine(), "ending\n");
    kill(static_cast<pid_t>(process->processId()), signal);
    ASSERT_TRUE(process->waitForFinished(patience));
    EXPECT_EQ(process->exitStatus(), QProcess::NormalExit) << signal;
    EXPECT_EQ(process->exitCode(), 0);
    EXPECT_EQ(process->readAll(), "ended\n");
  }
}
