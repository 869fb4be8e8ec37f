#include "platform/camera/camera_source.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <thread>

#include "platform/camera/camera_choice.h"
#include "platform/camera/camera_watch.h"
#include "platform/camera/node_scan.h"

namespace handset {
namespace {

/// The first scan is through by then, whoever answers.
constexpr std::chrono::milliseconds scan_wait{3000};
/// The longest a window may freeze; it hears about the cameras later.
constexpr std::chrono::milliseconds window_wait{80};
/// Grace period for a camera that this process has just closed.
constexpr std::chrono::milliseconds letting_go{400};
constexpr std::chrono::milliseconds question_limit{500};

constexpr std::string_view named = "camera:";

struct Memory {
  std::string rear, front;
};

/// Two lines of text: the rear camera's identity, then the front one's.
Memory load_memory(const std::string& path) {
  Memory memory;
  if (std::FILE* file = path.empty() ? nullptr : std::fopen(path.c_str(), "re")) {
    for (std::string* line : {&memory.rear, &memory.front}) {
      for (int c = std::fgetc(file); c != EOF && c != '\n'; c = std::fgetc(file)) line->push_back(static_cast<char>(c));
    }
    std::fclose(file);
  }
  return memory;
}

void save_memory(const std::string& path, const Memory& memory) {
  if (path.empty()) return;
  std::error_code ignored;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
  const std::string fresh = path + ".new";
  if (std::FILE* file = std::fopen(fresh.c_str(), "we")) {
    const bool written = std::fprintf(file, "%s\n%s\n", memory.rear.c_str(), memory.front.c_str()) > 0;
    if (std::fclose(file) == 0 && written) std::filesystem::rename(fresh, path, ignored);
  }
}

/// Two different cameras are worth remembering; a single one must not occupy both places for good. An unplugged camera
/// keeps its place.
void remember(const CameraServiceConfig& config, const std::vector<FoundCamera>& cameras, const CameraRoles& roles,
              const Memory& memory) {
  if (roles.rear == roles.front) return;
  const auto now = [&](const std::string& remembered, int role) {
    const FoundCamera& camera = cameras[static_cast<std::size_t>(role)];
    return remembered.empty() || is_called(camera, remembered) ? camera.identity : remembered;
  };
  const Memory fresh = {now(memory.rear, roles.rear), now(memory.front, roles.front)};
  if (fresh.rear != memory.rear || fresh.front != memory.front) save_memory(config.memory_file, fresh);
}

bool is_busy(const std::string& node) {
  return ask_within(question_limit, false, [node] { return node_is_busy(node); });
}

/// Who films with a camera through its node. PipeWire shares the cameras it uses.
struct Use {
  bool used = false;
  bool shared = false;
  std::string by;
};

Use judge_holders(const FoundCamera& camera, const std::vector<std::string>& holders) {
  const auto other = std::find_if_not(holders.begin(), holders.end(), is_media_server);
  if (other != holders.end()) return {true, false, *other};
  return {true, !holders.empty() && camera.device && !camera.other_modes.empty(), ""};
}

Use use_of(const FoundCamera& camera) {
  if (!camera.direct || camera.kind == CameraKind::loopback) return {};
  const auto end = std::chrono::steady_clock::now() + letting_go;
  while (is_busy(camera.node)) {
    const std::vector<std::string> holders = holders_of(camera.node);
    if (!holders.empty() || std::chrono::steady_clock::now() > end) return judge_holders(camera, holders);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // this program may be about to release it
  }
  return {};
}

Objection past_failure(const FoundCamera& camera) {
  return {recent_camera_failure(camera.identity), false, ""};
}

Objection objection_to(const FoundCamera& camera) {
  const Use use = use_of(camera);
  if (use.used && !use.shared) return {CameraTrouble::busy, true, use.by};
  return past_failure(camera);
}

/// @param ask whether to query the node, which is slow
void use_camera(FoundCamera camera, bool ask, Source* source) {
  if (ask && use_of(camera).shared) {
    camera.direct = false;
    camera.modes = std::move(camera.other_modes);
  }
  source->kind = Source::Kind::device;
  source->sizes = list_sizes(camera.modes);
  source->camera = std::move(camera);
}

int fail(CameraTrouble trouble, const std::string& why, Source* source) {
  source->trouble = trouble;
  source->why = why;
  std::fprintf(stderr, "%s\n", why.c_str());
  return error_of(trouble);
}

int resolve_named(const std::vector<FoundCamera>& cameras, const std::string& name, bool ask, Source* source) {
  int error = 0;
  const int index = find_by_name(cameras, name, &source->why, &error);
  if (index < 0) {
    std::fprintf(stderr, "%s\n", source->why.c_str());
    return error;
  }
  const FoundCamera& camera = cameras[static_cast<std::size_t>(index)];
  if (!camera.usable()) return fail(camera.trouble, camera.why, source);
  const Objection against = ask ? objection_to(camera) : Objection{};
  if (against.now) return fail(against.trouble, explain(against.trouble, camera.label, against.detail), source);
  use_camera(camera, ask, source);
  return 0;
}

/// The outcome for a role given the cameras present.
struct RoleChoice {
  CameraRoles roles;
  CameraChoice choice;
};

RoleChoice choose_for_role(camera_unit_t unit, const std::vector<FoundCamera>& cameras, const Memory& memory,
                           bool ask) {
  const CameraRoles roles = assign_roles(cameras, memory.rear, memory.front);
  const bool front = unit == CAMERA_UNIT_FRONT;
  return {roles,
          choose_camera(cameras, front ? roles.front : roles.rear,
                        find_evicted(cameras, front ? memory.front : memory.rear), ask ? objection_to : past_failure)};
}

int resolve_role(const CameraServiceConfig& config, camera_unit_t unit, const std::vector<FoundCamera>& cameras,
                 Source* source) {
  const Memory memory = load_memory(config.memory_file);
  const bool ask = config.wait_for_picture;
  const auto [roles, choice] = choose_for_role(unit, cameras, memory, ask);
  if (choice.index < 0) return fail(choice.trouble, choice.why, source);
  remember(config, cameras, roles, memory);
  source->passed_over = choice.passed_over;
  if (!choice.passed_over.empty()) std::fprintf(stderr, "%s\n", choice.passed_over.c_str());
  use_camera(cameras[static_cast<std::size_t>(choice.index)], ask, source);
  return 0;
}

}  // namespace

int resolve_camera(const CameraServiceConfig& config, camera_unit_t unit, const std::string& name, Source* source) {
  CameraWatch& watch = CameraWatch::instance();
  // Half a list may lack the very camera that has the role.
  if (!watch.wait_first_scan(config.wait_for_picture ? scan_wait : window_wait) && !config.wait_for_picture) {
    return fail(CameraTrouble::searching, explain(CameraTrouble::searching, {}), source);
  }
  const std::vector<FoundCamera> cameras = watch.cameras_now();
  if (!name.empty()) return resolve_named(cameras, name, config.wait_for_picture, source);
  if (!cameras.empty()) return resolve_role(config, unit, cameras, source);
  std::fputs("no camera found, filming the built-in scene\n", stderr);
  use_scene(source);
  // The remembered size is an index; the first entry suits every camera that may come later.
  const auto is_720p = [](const camera_res_t& size) { return size.width == 1280 && size.height == 720; };
  std::stable_partition(source->sizes.begin(), source->sizes.end(), is_720p);
  source->stands_in = true;
  return 0;
}

std::string absent_owner(const CameraServiceConfig& config, camera_unit_t unit) {
  const std::string& text = unit == CAMERA_UNIT_FRONT ? config.front : config.rear;
  if (text != "auto") return {};
  const Memory memory = load_memory(config.memory_file);
  const std::string& owner = unit == CAMERA_UNIT_FRONT ? memory.front : memory.rear;
  const std::vector<FoundCamera> cameras = CameraWatch::instance().cameras_now();
  const bool present =
      std::any_of(cameras.begin(), cameras.end(), [&](const FoundCamera& camera) { return is_called(camera, owner); });
  return present ? "" : owner;
}

std::string camera_candidate(const CameraServiceConfig& config, camera_unit_t unit) {
  const std::string& text = unit == CAMERA_UNIT_FRONT ? config.front : config.rear;
  const std::vector<FoundCamera> cameras = CameraWatch::instance().cameras_now();
  int index = -1;
  if (text == "auto") {
    index = choose_for_role(unit, cameras, load_memory(config.memory_file), false).choice.index;
  } else if (text.starts_with(named)) {
    std::string complaint;
    int error = 0;
    index = find_by_name(cameras, text.substr(named.size()), &complaint, &error);
  }
  const FoundCamera* camera = index >= 0 ? &cameras[static_cast<std::size_t>(index)] : nullptr;
  return camera != nullptr && camera->usable() ? camera->identity : "";
}

}  // namespace handset
