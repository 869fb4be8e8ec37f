#include "platform/device/profile.h"

#include <glib.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <functional>
#include <memory>
#include <string_view>

namespace {

using Setter = bool (*)(DeviceProfile&, const std::string&);

struct Key {
  const char* group;
  const char* name;
  Setter set;  ///< returns false if the value is out of range
};

bool parse_int(const std::string& text, int low, int high, int& out) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < low || value > high) return false;
  out = value;
  return true;
}

bool parse_bool(const std::string& text, bool& out) {
  if (text != "true" && text != "false") return false;
  out = text == "true";
  return true;
}

bool parse_text(const std::string& text, std::string& out) {
  if (text.empty()) return false;
  out = text;
  return true;
}

bool parse_pin(const std::string& text, std::string& out) {
  const bool prefixed = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  return prefixed && text.find_first_not_of("0123456789abcdefABCDEF", 2) == std::string::npos && parse_text(text, out);
}

using P = DeviceProfile;
using S = const std::string;
constexpr std::array<Key, 13> keys = {{
    {"display", "width", [](P& p, S& v) { return parse_int(v, 240, 4096, p.display_width); }},
    {"display", "height", [](P& p, S& v) { return parse_int(v, 240, 4096, p.display_height); }},
    {"camera", "front", [](P& p, S& v) { return parse_text(v, p.front); }},
    {"camera", "rear", [](P& p, S& v) { return parse_text(v, p.rear); }},
    {"camera", "desktop", [](P& p, S& v) { return parse_text(v, p.desktop); }},
    {"camera", "microphone", [](P& p, S& v) { return parse_text(v, p.microphone); }},
    {"camera", "video-light", [](P& p, S& v) { return parse_bool(v, p.video_light); }},
    {"camera", "stabilization", [](P& p, S& v) { return parse_bool(v, p.stabilization); }},
    {"device", "pin", [](P& p, S& v) { return parse_pin(v, p.pin); }},
    {"device", "keyboard", [](P& p, S& v) { return parse_bool(v, p.keyboard); }},
    {"device", "os-version", [](P& p, S& v) { return parse_text(v, p.os_version); }},
    {"bbm", "state", [](P& p, S& v) { return parse_int(v, 0, 13, p.bbm_state); }},
    {"bbm", "registered", [](P& p, S& v) { return parse_bool(v, p.bbm_registered); }},
}};

const Key* find_key(std::string_view group, std::string_view name) {
  for (const Key& key : keys) {
    if (group == key.group && name == key.name) return &key;
  }
  return nullptr;
}

/// @return an error message, empty if all is well
std::string apply(GKeyFile* file, const std::string& group, const std::string& name, DeviceProfile& profile) {
  const Key* key = find_key(group, name);
  if (key == nullptr) return "unknown key \"" + name + "\" in [" + group + "]";
  const std::unique_ptr<char, void (*)(gpointer)> value(
      g_key_file_get_string(file, group.c_str(), name.c_str(), nullptr), g_free);
  if (value != nullptr && key->set(profile, value.get())) return {};
  const std::string text = value ? value.get() : "";
  return "bad value \"" + text + "\" for \"" + name + "\" in [" + group + "], the default is used";
}

}  // namespace

DeviceProfile load_device_profile(const std::string& path, bool quiet) {
  DeviceProfile profile;
  const auto complain = [&](const std::string& text) {
    if (!quiet && !text.empty()) std::fprintf(stderr, "%s: %s\n", path.c_str(), text.c_str());
  };
  const std::unique_ptr<GKeyFile, void (*)(GKeyFile*)> file(g_key_file_new(), g_key_file_free);
  GError* error = nullptr;
  if (!g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, &error)) {
    if (!g_error_matches(error, G_FILE_ERROR, G_FILE_ERROR_NOENT)) complain(error->message);
    g_error_free(error);
    return profile;
  }
  const std::unique_ptr<char*, void (*)(char**)> groups(g_key_file_get_groups(file.get(), nullptr), g_strfreev);
  for (char** group = groups.get(); *group != nullptr; ++group) {
    const std::unique_ptr<char*, void (*)(char**)> names(g_key_file_get_keys(file.get(), *group, nullptr, nullptr),
                                                         g_strfreev);
    for (char** name = names.get(); name != nullptr && *name != nullptr; ++name) {
      complain(apply(file.get(), *group, *name, profile));
    }
  }
  return profile;
}

std::string device_profile_path() {
  return std::string(g_get_user_config_dir()) + "/morvane/device.ini";
}

const DeviceProfile& device_profile() {
  static const DeviceProfile profile = load_device_profile(device_profile_path());
  return profile;
}
