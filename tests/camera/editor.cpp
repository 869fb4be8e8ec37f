#include "tests/camera/editor.h"

#include <gtest/gtest.h>

Editor::Editor(camera_handle_t handle, Edit edit)
    : handle_(handle),
      edit_(std::move(edit)),
      chid_(ChannelCreate(0)),
      coid_(ConnectAttach(0, 0, chid_, side_channel_index, 0)) {
  const pulse_event_t event = make_pulse_event(coid_, -1, 123, 0);
  EXPECT_EQ(camera_enable_viewfinder_event(handle_, CAMERA_EVENTMODE_READWRITE, &key_, &event), 0);
  thread_ = std::thread([this] { run(); });
}

void Editor::run() {
  camera_register_resource(handle_);
  while (!stop_) {
    pulse_t pulse{};
    camera_buffer_t input{};
    camera_buffer_t output{};
    if (MsgReceivePulse(chid_, &pulse, sizeof pulse, nullptr) != 0 || stop_) break;
    if (camera_get_viewfinder_buffers(handle_, key_, &input, &output) != 0) continue;
    edit_(output);
    last_data_ = output.data;
    camera_return_buffer(handle_, &input);
    camera_return_buffer(handle_, &output);
    ++edited_;
  }
  camera_disable_event(handle_, key_);
  camera_deregister_resource(handle_);
}

void Editor::stop() {
  if (!thread_.joinable()) return;
  stop_ = true;
  MsgSendPulse(coid_, -1, 123, 0);
  thread_.join();
  ConnectDetach(coid_);
  ChannelDestroy(chid_);
}
