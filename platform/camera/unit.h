#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdarg>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "platform/camera/camera.h"
#include "platform/camera/camera_config.h"
#include "platform/camera/camera_trouble.h"
#include "platform/camera/capture.h"
#include "platform/camera/control_plan.h"
#include "platform/camera/device_controls.h"
#include "platform/camera/frame_exchange.h"
#include "platform/camera/recorder.h"
#include "platform/camera/saving.h"
#include "platform/camera/source.h"
#include "platform/camera/stream_properties.h"
#include "platform/camera/viewfinder_feed.h"

namespace handset {

/// A film's file, open and marked as being written.
class FilmHold;

/// One open camera. The functions are those of camera.h; any thread.
///
/// Locks, in the order in which they may be taken: control_mutex_, look_mutex_, state_mutex_, the exchange's. The
/// client's callbacks run with none of them held.
class CameraUnit : public std::enable_shared_from_this<CameraUnit> {
 public:
  CameraUnit(camera_handle_t handle, camera_unit_t unit, std::uint32_t mode, Source source,
             const CameraServiceConfig& config);
  ~CameraUnit();

  camera_unit_t unit() const { return unit_; }
  std::uint32_t mode() const { return mode_; }
  bool has_feature(int feature) const;
  /// Opened anew, the unit would be given another camera. Any thread.
  bool may_be_replaced() const;
  const std::vector<camera_res_t>& sizes() const { return source_->sizes; }

  enum class Stream { viewfinder, video };
  int set_properties(Stream stream, int property, std::va_list* values);
  int get_properties(Stream stream, int property, std::va_list* values) const;

  int start_viewfinder(camera_viewfinder_callback_t frame_callback, camera_status_callback_t status_callback,
                       void* arg);
  int stop_viewfinder();

  /// The running viewfinder's exchange, or null.
  std::shared_ptr<FrameExchange> exchange() const;

  int set_scene_mode(camera_scenemode_t mode);
  int set_light(camera_videolightmode_t mode);
  int set_focus_mode(camera_focusmode_t mode);
  bool light_is_lamp() const;
  int zoom_limits(int* minimum, int* maximum, bool* smooth) const;
  int set_zoom(int level);

  int start_video(const char* filename, camera_viewfinder_callback_t video_callback,
                  camera_status_callback_t status_callback, void* arg);
  void hold_video(bool hold);
  void wait_first_frame() const;
  int stop_video();
  CameraStatistics statistics() const;

 private:
  /// One run of the viewfinder, from its start to its stop. A callback may start the next one before this one is over.
  struct Run {
    std::atomic<bool> stop{false};
    std::mutex mutex;  ///< guards the rest
    std::condition_variable changed;
    bool settled = false;  ///< the first picture is there, or the start has failed
    int error = 0;
  };
  using RunPtr = std::shared_ptr<Run>;
  /// Why there is no picture, for the screen and the error stream.
  struct Reason {
    CameraTrouble trouble = CameraTrouble::none;
    std::string text;
  };
  /// What is found out beside the running viewfinder, for the first recording.
  struct Preparation {
    std::mutex mutex;  ///< guards the rest
    std::condition_variable changed;
    bool done = false;
    bool wanted = false;  ///< a recording waits
  };
  /// How far a recording was when it last took a frame.
  struct Progress {
    int recording = 0;
    std::uint64_t recorded = 0, dropped = 0;
    std::chrono::steady_clock::time_point when{};
  };
  struct Client {
    camera_viewfinder_callback_t frame = nullptr;
    camera_status_callback_t status = nullptr;
    void* arg = nullptr;
  };

  int check_start(camera_res_t* size) const;
  bool waits_for_picture() const;
  void prepare();
  void wait_prepared() const;
  std::string microphone_for_recording() const;
  void show_status(const std::string& text) const;
  void end_feed();
  void publish(const Frame& frame, std::uint64_t pair);
  void call_with_descriptor(const Client& client, const Frame& frame) const;

  // The service thread: unit_service.cpp.
  void serve(const RunPtr& run);
  bool bring_up(const RunPtr& run);
  int launch(const Run& run, bool patient, Reason* reason);
  int launch_way(const Run& run, int way, bool patient, Reason* reason);
  bool is_lost(Capture::Event event, const Capture& capture, Reason* reason);
  bool restart(const Run& run, Reason* reason);
  bool wait_to_retry(const Run& run, const Reason& reason);
  Reason diagnose(const std::string& why, bool held) const;
  void say(const std::string& text);
  void complain(const Reason& reason);
  void settle(Run& run, int error);
  void take_picture_up(const std::shared_ptr<Capture>& capture, const Run& run);
  void wait_for_return();
  bool is_present() const;
  void revoke(const Reason& reason, const Run& run);
  void finish_clip(const Run& run);

  std::shared_ptr<Recorder> make_recorder(const char* filename, const Capture& capture);
  void recording_ended(int recording, int error);
  int wait_recording(Recorder& recorder, const Capture& capture) const;
  bool may_stall() const { return !unpaced_ && !source_->may_stand_still(); }
  void begin_taking();
  void watch_recording();
  void forget_recording();
  void report_recording_error();
  void open_controls();
  void apply_look();
  std::shared_ptr<DeviceControls> controls() const;
  void apply_stabilization();
  std::shared_ptr<Recorder> recorder() const;
  std::shared_ptr<Capture> capture() const;
  void with_slot(const std::function<void(ViewfinderSlot&)>& change) const;
  bool expects_frames() const;
  int end_recording();

  const camera_handle_t handle_;
  const camera_unit_t unit_;
  const std::uint32_t mode_;
  const std::shared_ptr<const Source> source_;
  const CameraServiceConfig config_;
  const bool unpaced_;

  /// Serialises starting and stopping of viewfinder and recording. Never held while the service thread
  /// is joined or a callback runs.
  std::mutex control_mutex_;

  // Guarded by control_mutex_, and of recorder_:
  std::shared_ptr<FilmHold> hold_;  ///< until it is being ended
  std::shared_ptr<Saving> saving_;  ///< once it is being ended

  /// Held while wishes are shared out between device and picture, so that the newest come last.
  std::mutex look_mutex_;

  /// Guards what follows; held for reading and swapping pointers only.
  mutable std::mutex state_mutex_;
  StreamProperties viewfinder_;
  StreamProperties video_;
  RunPtr run_;                        ///< null while no viewfinder was started
  std::shared_ptr<Capture> capture_;  ///< null while it has no picture yet
  std::shared_ptr<FrameExchange> exchange_;
  std::shared_ptr<ViewfinderFeed> feed_;
  std::shared_ptr<Recorder> recorder_;
  std::shared_ptr<Recorder> finished_;  ///< the last recording, for its figures
  bool video_held_ = false;
  std::shared_ptr<Preparation> preparation_;
  std::shared_ptr<DeviceControls> controls_;  ///< of the running viewfinder's device, where it has a node
  Client viewfinder_client_;
  Client video_client_;
  CameraWishes wishes_;

  std::string complaint_;  ///< the last one, until there is a picture; the service thread's own
  /// Pairs from this one on are recorded; 0: unedited frames, too.
  std::atomic<std::uint64_t> first_pair_{0};
  std::atomic<int> recording_{0};        ///< number of the current recording; changes when it is over
  Progress progress_;                    ///< the service thread's own
  std::atomic<bool> lost_{false};        ///< the source has failed since the viewfinder started
  std::atomic<int> recording_error_{0};  ///< why the recording ended by itself, until the client was told
  std::thread service_thread_;           ///< guarded by control_mutex_ but for the join
};

}  // namespace handset
