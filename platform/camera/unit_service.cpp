// A unit's service thread: brings the first picture about, looks after the running source, and says what is wrong.

#include <cerrno>
#include <cstdio>
#include <thread>
#include <utility>

#include "platform/camera/camera_node.h"
#include "platform/camera/camera_watch.h"
#include "platform/camera/capture_start.h"
#include "platform/camera/reopen.h"
#include "platform/camera/time_asleep.h"
#include "platform/camera/unit.h"

namespace handset {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds service_turn{100};
constexpr std::chrono::milliseconds start_turn{20};
constexpr std::chrono::milliseconds clip_drain{5000};
/// A start that takes longer than this is told of on the screen.
constexpr std::chrono::milliseconds quiet_start{1000};
/// How long a device gets to let go of a capture before the next one is started; that one waits for it as well.
constexpr std::chrono::milliseconds device_release{1000};
constexpr int restarts_allowed = 2;
/// A source that ran for this long after a restart has got over it.
constexpr std::chrono::seconds recovered_after{10};

/// Until a camera in trouble is tried again.
std::chrono::milliseconds retry_pause(CameraTrouble trouble) {
  return std::chrono::seconds(trouble == CameraTrouble::busy ? 2 : 5);
}

constexpr char clip_has_ended[] = "the clip has ended";

}  // namespace

void CameraUnit::serve(const RunPtr& run) {
  if (!bring_up(run)) return;
  int restarts = 0;
  auto restarted = Clock::now();
  std::int64_t asleep = time_asleep();
  const bool device = source_->kind == Source::Kind::device;
  for (bool running = true; running && !run->stop;) {
    const std::shared_ptr<Capture> capture = this->capture();
    const Capture::Event event = capture->poll(service_turn);
    if (run->stop) return;
    watch_recording();
    report_recording_error();
    if (event == Capture::Event::ended && unpaced_) {
      finish_clip(*run);
      break;
    }
    // Wound back it would go on: its film is as complete as that of a clip that runs once.
    if (event == Capture::Event::ended && source_->is_clip()) {
      say(clip_has_ended);  // before the client hears of it, and may end the process
      finish_clip(*run);
    }
    Reason reason;
    const bool woken = device && time_asleep() - asleep > std::chrono::nanoseconds(std::chrono::seconds(1)).count();
    if (!woken && !is_lost(event, *capture, &reason)) continue;
    if (Clock::now() - restarted > recovered_after) restarts = 0;
    running = false;
    while (device && !woken && !running && restarts++ < restarts_allowed && is_present() && !run->stop) {
      running = restart(*run, &reason);
    }
    restarted = Clock::now();
    if (woken) reason = {CameraTrouble::none, "the computer was asleep"};
    asleep = time_asleep();
    if (!running && !run->stop) revoke(reason, *run);
  }
  // The film may have failed at its very end.
  for (; !run->stop && recording_error_ != 0; std::this_thread::sleep_for(service_turn)) report_recording_error();
}

/// Brings the first picture about. Where nobody waits for the answer, a camera in trouble is tried until it works.
/// @return false when there will be no picture in this run
bool CameraUnit::bring_up(const RunPtr& run) {
  for (;;) {
    Reason reason;
    const int error = launch(*run, true, &reason);
    if (run->stop || error == 0) {
      settle(*run, run->stop ? ECANCELED : 0);
      return !run->stop;
    }
    complain(reason);
    const bool device = source_->kind == Source::Kind::device;
    if (device) note_camera_failure(source_->camera.identity, reason.trouble);
    settle(*run, error);
    if (waits_for_picture()) return false;
    if (!is_present()) {
      wait_for_return();
      return false;
    }
    if (may_be_replaced()) miss_camera(unit_, Missing::passed_over, source_->camera.identity);
    if (!wait_to_retry(*run, reason)) return false;
  }
}

/// The answer for whoever waits in start_viewfinder().
void CameraUnit::settle(Run& run, int error) {
  const std::lock_guard lock(run.mutex);
  if (run.settled) return;
  run.settled = true;
  run.error = error;
  run.changed.notify_all();
}

/// Starts the source and waits for its first picture, in each way in which the source can be reached.
/// @param patient  a camera that takes long is told of, and waited for
int CameraUnit::launch(const Run& run, bool patient, Reason* reason) {
  int error = 0;
  for (int way = 0; way < source_->ways(); ++way) {
    error = launch_way(run, way, patient, reason);
    // Another way to the same device helps where this one is taken or forbidden.
    const bool helps = reason->trouble == CameraTrouble::busy || reason->trouble == CameraTrouble::no_access;
    if (error == 0 || run.stop || !helps) break;
  }
  with_slot([](ViewfinderSlot& slot) { slot.set_notice({}); });
  return error;
}

/// @return 0 with the capture taken up, or an errno value with the reason
int CameraUnit::launch_way(const Run& run, int way, bool patient, Reason* reason) {
  camera_res_t size{};
  int frame_rate = 0;
  bool stabilized = false;
  {
    const std::lock_guard lock(state_mutex_);
    stabilized = video_.stabilization != 0;
    size = {static_cast<std::uint32_t>(viewfinder_.width), static_cast<std::uint32_t>(viewfinder_.height)};
    frame_rate = viewfinder_.frame_rate;
  }
  const std::shared_ptr<FrameExchange> exchange = this->exchange();
  CaptureStart start({.source = source_,
                      .size = size,
                      .frame_rate = frame_rate,
                      .unpaced = unpaced_,
                      .stabilized = stabilized,
                      .way = way},
                     [exchange](Frame frame) { exchange->offer(std::move(frame)); });
  std::shared_ptr<Capture> capture;
  std::string why;
  // The device is let go of first: it would be found in use, by us.
  const auto fail = [&](const std::string& words) {
    if (capture) stop_capture(capture, device_release, &run.stop);
    *reason = diagnose(words, false);
    return error_of(reason->trouble);
  };
  const auto begin = Clock::now();
  const bool device = source_->kind == Source::Kind::device;
  for (bool told = false, late = false; !run.stop;) {
    if (!capture) {
      if (start.wait(start_turn)) capture = start.take(&why);
      if (!capture && !why.empty()) return fail(why);
    } else if (capture->wait_first_frame(start_turn)) {
      take_picture_up(capture, run);
      return 0;
    } else if (capture->poll(std::chrono::milliseconds(0)) != Capture::Event::none) {
      const std::string& failure = capture->failure();
      return fail(failure.empty() ? "the source ended without a picture" : failure);
    }
    const auto waited = Clock::now() - begin;
    if (!told && device && waited > quiet_start) {
      with_slot([](ViewfinderSlot& slot) { slot.set_notice("Starting the camera…"); });
      told = true;
    }
    if (waited <= camera_timeouts::first_frame || late) {
      if (waited > camera_timeouts::late_frame) return fail("");
      continue;
    }
    // Some cameras need longer; where there is another one, that is not waited for.
    if (!device || !patient) return fail("");
    const Reason so_far = diagnose("", true);
    note_camera_failure(source_->camera.identity, so_far.trouble);
    if (may_be_replaced()) return fail("");
    complain(so_far);
    late = true;
  }
  *reason = {};
  if (capture) stop_capture(capture, device_release, &run.stop);
  return ECANCELED;
}

/// What is behind a failure of the source.
/// @param why   the source's own words; empty: it gives no picture
/// @param held  this unit has the device, which is then in nobody else's use
CameraUnit::Reason CameraUnit::diagnose(const std::string& why, bool held) const {
  if (source_->kind != Source::Kind::device) {
    return {why.empty() ? CameraTrouble::no_picture : CameraTrouble::gone,
            why.empty() ? "the source gives no picture" : why};
  }
  const FoundCamera& camera = source_->camera;
  std::string detail;
  CameraTrouble trouble = trouble_of_node(camera.node, !held, &detail);
  if (trouble == CameraTrouble::none) {
    trouble = CameraTrouble::no_picture;
    detail = why;
  }
  return {trouble, explain(trouble, camera.label, detail)};
}

/// Writes a line, unless it was the last one already.
void CameraUnit::say(const std::string& text) {
  if (std::exchange(complaint_, text) != text) std::fprintf(stderr, "camera: %s\n", text.c_str());
}

/// Says what is wrong on the screen, where it stays until a picture comes, and once on the error stream.
void CameraUnit::complain(const Reason& reason) {
  say(reason.text);
  const bool device = source_->kind == Source::Kind::device;
  with_slot([&](ViewfinderSlot& slot) {
    slot.set_notice({});
    slot.set_trouble(device ? reason.text : "The camera gives no picture: " + reason.text);
  });
}

/// The capture has its first picture.
void CameraUnit::take_picture_up(const std::shared_ptr<Capture>& capture, const Run& run) {
  {
    const std::lock_guard lock(state_mutex_);
    capture_ = capture;
  }
  complaint_.clear();
  if (source_->kind == Source::Kind::device) clear_camera_failure(source_->camera.identity);
  if (source_->stands_in) {
    miss_camera(unit_, Missing::stand_in, {});
  } else if (const std::string owner = source_->kind == Source::Kind::device ? absent_owner(unit_) : "";
             !owner.empty()) {
    miss_camera(unit_, Missing::displaced, owner);
  } else {
    forget_missed(unit_);
  }
  with_slot([&](ViewfinderSlot& slot) {
    slot.set_notice({});
    slot.set_trouble(source_->stands_in ? "No camera found. This scene is drawn by the program." : "");
  });
  if (run.stop) return;  // whoever stops it has let go of the controls already
  if (!controls()) open_controls();
  apply_look();
  apply_stabilization();  // it may have been switched while the capture started
  prepare();
}

/// Whether the device is plugged in.
bool CameraUnit::is_present() const {
  if (source_->kind != Source::Kind::device) return true;
  const FoundCamera& camera = source_->camera;
  return camera.node.empty() ? CameraWatch::instance().has(camera.identity) : node_exists(camera.node);
}

/// Whether this unit would be given another camera now.
bool CameraUnit::may_be_replaced() const {
  if (source_->kind != Source::Kind::device) return false;
  const std::string candidate = camera_candidate(unit_);
  return !candidate.empty() && candidate != source_->camera.identity;
}

/// Whether a running source has failed, ended or stalled.
bool CameraUnit::is_lost(Capture::Event event, const Capture& capture, Reason* reason) {
  const bool may_stall = !unpaced_ && !source_->may_stand_still();
  if (source_->cast && source_->cast->ended()) {
    *reason = {CameraTrouble::gone, "the desktop is no longer shared"};
  } else if (event == Capture::Event::ended) {
    *reason = {CameraTrouble::gone, source_->is_clip() ? clip_has_ended : "the source has ended"};
  } else if (event == Capture::Event::failed) {
    *reason = {CameraTrouble::gone, capture.failure()};
  } else if (!is_present()) {
    *reason = {CameraTrouble::gone, explain(CameraTrouble::gone, source_->camera.label)};
  } else if (source_->is_clip() && capture.is_starved(camera_timeouts::stalled)) {
    *reason = {CameraTrouble::gone, "the clip gives no more pictures"};
  } else if (may_stall && capture.silence() > camera_timeouts::stalled) {
    *reason = diagnose("", true);
  } else {
    return false;
  }
  return true;
}

/// Starts a source that has stalled or failed anew; a recording goes on.
bool CameraUnit::restart(const Run& run, Reason* reason) {
  std::fprintf(stderr, "camera: %s; starting it again\n", reason->text.c_str());
  stop_capture(capture(), device_release, &run.stop);
  const int error = launch(run, false, reason);
  if (error != 0 && !run.stop) complain(*reason);
  return error == 0;
}

/// Waits until a camera in trouble is worth another try. @return false when this run ends, or the camera is gone
bool CameraUnit::wait_to_retry(const Run& run, const Reason& reason) {
  const auto end = Clock::now() + retry_pause(reason.trouble);
  while (!run.stop && Clock::now() < end) std::this_thread::sleep_for(start_turn);
  if (run.stop) return false;
  // A camera that was plugged in again is another device, at another node perhaps.
  if (is_present() && !CameraWatch::instance().has_changed(source_->camera)) return true;
  wait_for_return();
  return false;
}

/// The device is gone, or a new one has come in its place: opening the unit anew is worth it when it is there.
void CameraUnit::wait_for_return() {
  if (!is_present()) complain({CameraTrouble::gone, explain(CameraTrouble::gone, source_->camera.label)});
  miss_camera(unit_, Missing::lost, source_->camera.identity);
}

/// The source is lost: no more frames, the client is told, the recording is completed.
void CameraUnit::revoke(const Reason& reason, const Run& run) {
  const bool device = source_->kind == Source::Kind::device;
  const std::string& label = device ? source_->camera.label : "";
  lost_ = true;
  Client client;
  {
    const std::lock_guard lock(state_mutex_);
    client = viewfinder_client_;
  }
  const bool asleep = device && reason.trouble == CameraTrouble::none;
  const bool gone = reason.trouble == CameraTrouble::gone || !is_present();
  const std::string text = device && gone ? explain(CameraTrouble::gone, label) : reason.text;
  const std::string sentence = device ? text : "The camera has stopped: " + text;
  say(text);
  if (const auto exchange = this->exchange()) exchange->shut();
  if (const auto running = capture()) stop_capture(running, device_release, &run.stop);
  with_slot([&](ViewfinderSlot& slot) {
    slot.set_trouble(asleep ? "The computer was asleep. Starting the camera again." : sentence);
  });
  end_feed();
  if (device) miss_camera(unit_, Missing::lost, source_->camera.identity);
  if (client.status != nullptr) client.status(handle_, CAMERA_STATUS_RESOURCES_REVOKED, 0, client.arg);
  if (run.stop) return;  // whoever stops the viewfinder completes the film
  const std::lock_guard control(control_mutex_);
  end_recording();
}

/// An unpaced clip is through: when its last frame has been edited the film is complete.
void CameraUnit::finish_clip(const Run& run) {
  const std::shared_ptr<FrameExchange> exchange = this->exchange();
  if (!exchange || !exchange->wait_idle(clip_drain)) {
    revoke({CameraTrouble::gone, "the last picture does not come back"}, run);
    return;
  }
  Client client;
  bool complete = false;
  {
    const std::lock_guard control(control_mutex_);
    complete = recorder() != nullptr && end_recording() == 0;
    const std::lock_guard lock(state_mutex_);
    client = video_client_;
  }
  if (client.status != nullptr && complete) {
    client.status(handle_, CAMERA_STATUS_VIDEO_FINISHED, 0, client.arg);
  }
}

}  // namespace handset
