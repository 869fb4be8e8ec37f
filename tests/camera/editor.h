#pragma once

#include <atomic>
#include <functional>
#include <thread>

#include "platform/camera/camera.h"

/// An editor of frames as an application would run one: a thread that waits for pulses and edits pairs.
class Editor {
 public:
  using Edit = std::function<void(const camera_buffer_t& output)>;
  Editor(camera_handle_t handle, Edit edit);
  ~Editor() { stop(); }
  void stop();
  std::uint64_t edited() const { return edited_; }
  const std::uint8_t* last_data() const { return last_data_; }

 private:
  void run();

  const camera_handle_t handle_;
  const Edit edit_;
  int chid_;
  int coid_;
  camera_eventkey_t key_ = 0;
  std::atomic<bool> stop_{false};
  std::atomic<std::uint64_t> edited_{0};
  std::atomic<const std::uint8_t*> last_data_{nullptr};
  std::thread thread_;
};
