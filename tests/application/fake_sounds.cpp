// System sounds that are logged in the camera's journal instead of played.

#include "platform/sound/soundplayer.h"
#include "tests/application/fake_camera_service.h"

int soundplayer_play_sound_blocking(const char* name) {
  fake_camera::write_down(std::string("play to the end ") + name);
  return 0;
}

int soundplayer_play_sound(const char* name) {
  fake_camera::write_down(std::string("play ") + name);
  return 0;
}
