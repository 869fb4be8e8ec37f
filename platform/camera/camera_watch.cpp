#include "platform/camera/camera_watch.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <condition_variable>
#include <map>
#include <mutex>
#include <string_view>
#include <thread>

#include "platform/camera/device_views.h"
#include "platform/camera/node_scan.h"
#include "platform/camera/v4l2_node.h"

namespace handset {
namespace {

/// A node appears before its rights and its siblings: news are waited for to end, but not for ever.
constexpr std::chrono::milliseconds quiet{200};
constexpr std::chrono::milliseconds longest_wait{1000};
/// For nodes and servers that do not answer; their news come later.
constexpr std::chrono::milliseconds node_limit{700};
constexpr std::chrono::milliseconds server_limit{2000};

/// What a change of the list is measured by.
std::string fingerprint(const std::vector<FoundCamera>& cameras) {
  std::string text;
  for (const FoundCamera& camera : cameras) {
    text += camera.identity + '\n' + camera.node + '\n' + camera.why + '\n' + (camera.device ? 'd' : '-') +
            std::to_string(camera.modes.size()) + '\n';
  }
  return text;
}

/// Whether one of the events that an inotify descriptor has is a video node's.
bool read_node_events(int fd) {
  alignas(inotify_event) char bytes[4096];
  bool found = false;
  for (ssize_t size = 0; (size = read(fd, bytes, sizeof bytes)) > 0;) {
    for (ssize_t at = 0; at < size;) {
      const auto* event = reinterpret_cast<const inotify_event*>(bytes + at);
      const std::string_view name = event->len > 0 ? std::string_view(event->name) : std::string_view();
      found = found || name.starts_with("video") || (event->mask & IN_Q_OVERFLOW) != 0;
      at += static_cast<ssize_t>(sizeof *event + event->len);
    }
  }
  return found;
}

}  // namespace

struct CameraWatch::Shared {
  std::mutex mutex;  ///< guards the rest but for `calling` and `wake`
  std::condition_variable changed;
  bool scanned = false;
  std::vector<FoundCamera> cameras;
  std::map<int, std::function<void()>> listeners;
  int next_listener = 0;
  std::mutex calling;  ///< held while listeners run
  const int wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);

  void publish(std::vector<FoundCamera> found, bool complete);
  bool wait_for_news(int inotify) const;
  void run();
};

void CameraWatch::Shared::publish(std::vector<FoundCamera> found, bool complete) {
  bool differs = false;
  {
    const std::lock_guard lock(mutex);
    // Whoever has waited for the first whole list hears of it even when it brings nothing new.
    differs = fingerprint(found) != fingerprint(cameras) || (complete && !scanned);
    cameras = std::move(found);
    scanned = scanned || complete;
  }
  changed.notify_all();
  if (!differs) return;
  const std::lock_guard in_call(calling);
  std::map<int, std::function<void()>> called;
  {
    const std::lock_guard lock(mutex);
    called = listeners;
  }
  for (const auto& [number, listener] : called) listener();
}

/// Returns some time after news: when there are no more.
bool CameraWatch::Shared::wait_for_news(int inotify) const {
  pollfd watched[] = {{wake, POLLIN, 0}, {inotify, POLLIN, 0}};
  const nfds_t count = inotify >= 0 ? 2 : 1;
  bool news = false;
  const auto now = [] { return std::chrono::steady_clock::now(); };
  auto end = now();
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - now());
    if (news && left.count() <= 0) return true;
    const int limit = news ? static_cast<int>(std::min(left, quiet).count()) : -1;
    const int ready = poll(watched, count, limit);
    if (ready == 0) return true;
    if (ready < 0) continue;
    eventfd_t ignored = 0;
    const bool asked = watched[0].revents != 0 && eventfd_read(wake, &ignored) == 0;
    const bool node = count > 1 && watched[1].revents != 0 && read_node_events(inotify);
    if (!news && (asked || node)) {
      news = true;
      end = now() + longest_wait;
    }
  }
}

void CameraWatch::Shared::run() {
  gst_init(nullptr, nullptr);
  const int inotify = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
  if (inotify >= 0) inotify_add_watch(inotify, "/dev", IN_CREATE | IN_DELETE | IN_ATTRIB | IN_MOVE);
  const auto ring = [this] { eventfd_write(wake, 1); };
  set_late_answer(ring);
  bool answered = false;
  // The servers are started before the nodes are asked, so that they think meanwhile.
  device_views(std::chrono::milliseconds(0), &answered);
  set_device_news(ring);
  bool first = true;
  do {
    const Decoders decoders = installed_decoders();
    const std::vector<V4l2Answers> nodes = ask_all_nodes(node_limit);
    publish(merge_cameras(nodes, device_views(std::chrono::milliseconds(0), &answered), decoders), answered);
    if (first && !answered) publish(merge_cameras(nodes, device_views(server_limit, &answered), decoders), true);
    first = false;
  } while (wait_for_news(inotify));
}

CameraWatch& CameraWatch::instance() {
  static CameraWatch* const watch = new CameraWatch;  // never destroyed: its threads live as long as the process
  return *watch;
}

CameraWatch::CameraWatch() : shared_(std::make_shared<Shared>()) {
  std::thread([shared = shared_] { shared->run(); }).detach();
}

std::vector<FoundCamera> CameraWatch::cameras_now() {
  const std::lock_guard lock(shared_->mutex);
  return shared_->cameras;
}

bool CameraWatch::has(const std::string& identity) {
  const std::lock_guard lock(shared_->mutex);
  return std::any_of(shared_->cameras.begin(), shared_->cameras.end(),
                     [&](const FoundCamera& camera) { return camera.identity == identity; });
}

bool CameraWatch::has_changed(const FoundCamera& camera) {
  const std::lock_guard lock(shared_->mutex);
  return std::any_of(shared_->cameras.begin(), shared_->cameras.end(), [&](const FoundCamera& now) {
    const bool same = now.node == camera.node && (!camera.node.empty() || now.device.get() == camera.device.get());
    return now.identity == camera.identity && !same;
  });
}

bool CameraWatch::wait_first_scan(std::chrono::milliseconds limit) {
  std::unique_lock lock(shared_->mutex);
  return shared_->changed.wait_for(lock, limit, [this] { return shared_->scanned; });
}

void CameraWatch::rescan() {
  eventfd_write(shared_->wake, 1);
}

int CameraWatch::on_cameras_changed(std::function<void()> listener) {
  const std::lock_guard lock(shared_->mutex);
  shared_->listeners.emplace(shared_->next_listener, std::move(listener));
  return shared_->next_listener++;
}

void CameraWatch::stop_listening(int number) {
  const std::lock_guard in_call(shared_->calling);
  const std::lock_guard lock(shared_->mutex);
  shared_->listeners.erase(number);
}

}  // namespace handset
