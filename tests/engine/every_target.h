#pragma once

#include <gtest/gtest.h>
#include <hwy/targets.h>

/// Runs `check` once with each instruction set that this CPU and this build have.
template <typename Check>
void on_every_target(Check check) {
  for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
    SCOPED_TRACE(hwy::TargetName(target));
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().DeInit();
    check();
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().DeInit();
}
