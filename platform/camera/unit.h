#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdarg>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "platform/camera/camera.h"
#include "platform/camera/camera_config.h"
#include "platform/camera/capture.h"
#include "platform/camera/frame_exchange.h"
#include "platform/camera/recorder.h"
#include "platform/camera/source.h"
#include "platform/camera/stream_properties.h"
#include "platform/camera/viewfinder_feed.h"

namespace handset {

/// One open camera. The functions are those of camera.h; any thread.
///
/// Locks, in the order in which they may be taken: control_mutex_, state_mutex_, the exchange's. The
/// client's callbacks run with none of them held.
class CameraUnit : public std::enable_shared_from_this<CameraUnit> {
 public:
  CameraUnit(camera_handle_t handle, camera_unit_t unit, std::uint32_t mode, Source source,
             const CameraServiceConfig& config);
  ~CameraUnit();

  camera_unit_t unit() const { return unit_; }
  std::uint32_t mode() const { return mode_; }
  bool has_feature(int feature) const;
  const std::vector<camera_res_t>& sizes() const { return source_.sizes; }

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
  int zoom_limits(int* minimum, int* maximum, bool* smooth) const;
  int set_zoom(int level);

  int start_video(const char* filename, camera_viewfinder_callback_t video_callback,
                  camera_status_callback_t status_callback, void* arg);
  int stop_video();
  CameraStatistics statistics() const;

 private:
  /// Set when a run of the viewfinder is to end; each run has its own, since a callback may start the next one.
  using StopFlag = std::shared_ptr<std::atomic<bool>>;
  /// What is found out beside the running viewfinder, for the first recording.
  struct Preparation {
    std::mutex mutex;  ///< guards the rest
    std::condition_variable changed;
    bool done = false;
    bool sound = false;  ///< there is a microphone that delivers
  };
  struct Client {
    camera_viewfinder_callback_t frame = nullptr;
    camera_status_callback_t status = nullptr;
    void* arg = nullptr;
  };

  int check_start(camera_res_t* size) const;
  int launch(camera_res_t size, int frame_rate);
  void prepare(camera_res_t size, int frame_rate);
  bool wait_prepared(bool* sound) const;
  std::string microphone_for_recording() const;
  void notify(const std::string& text);
  void end_feed();
  void publish(const Frame& frame);
  void call_with_descriptor(const Client& client, const Frame& frame) const;
  void serve(const StopFlag& stop);
  void revoke(const std::string& why, const StopFlag& stop);
  void finish_clip(const StopFlag& stop);
  void report_recording_error();
  void apply_look();
  void apply_stabilization();
  std::shared_ptr<Recorder> recorder() const;
  void end_recording();

  const camera_handle_t handle_;
  const camera_unit_t unit_;
  const std::uint32_t mode_;
  const Source source_;
  const CameraServiceConfig config_;
  const bool unpaced_;

  /// Serialises starting and stopping of viewfinder and recording. Never held while the service thread
  /// is joined or a callback runs.
  std::mutex control_mutex_;

  /// Guards what follows; held for reading and swapping pointers only.
  mutable std::mutex state_mutex_;
  StreamProperties viewfinder_;
  StreamProperties video_;
  std::shared_ptr<Capture> capture_;
  std::shared_ptr<FrameExchange> exchange_;
  std::shared_ptr<ViewfinderFeed> feed_;
  std::shared_ptr<Recorder> recorder_;
  std::shared_ptr<Recorder> finished_;  ///< the last recording, for its figures
  std::shared_ptr<Preparation> preparation_;
  StopFlag stop_;  ///< of the current run
  Client viewfinder_client_;
  Client video_client_;
  camera_scenemode_t scene_ = CAMERA_SCENE_AUTO;
  bool light_ = false;
  int zoom_ = 0;

  std::atomic<bool> lost_{false};        ///< the source has failed since the viewfinder started
  std::atomic<int> recording_error_{0};  ///< why the recording ended by itself, until the client was told
  std::thread service_thread_;           ///< guarded by control_mutex_ but for the join
};

}  // namespace handset
