#include <chrono>

#include "platform/bbm/bbm.h"
#include "platform/device/profile.h"

namespace bb::platform::bbm {

using namespace std::chrono_literals;

namespace {

/// The time a server would take to answer.
constexpr auto answer_time = 300ms;

}  // namespace

Context::Context(const QUuid& uuid, QObject* parent) : QObject(parent), uuid_(uuid) {
  // Whoever read the profile first has reported its errors.
  const DeviceProfile profile = load_device_profile(device_profile_path(), true);
  registered_ = profile.bbm_registered;
  if (registered_) state_ = static_cast<RegistrationState::Type>(profile.bbm_state);
  answer_.setSingleShot(true);
  answer_.setInterval(answer_time);
  connect(&answer_, &QTimer::timeout, this, [this] {
    registered_ = true;
    follow(load_device_profile(device_profile_path(), true));
  });
  connect(&watcher_, &handset::ProfileWatcher::changed, this,
          [this] { follow(load_device_profile(device_profile_path())); });
}

bool Context::requestRegisterApplication() {
  if (uuid_.isNull() || answer_.isActive()) return false;
  answer_.start();
  QMetaObject::invokeMethod(
      this, [this] { Q_EMIT registrationStateUpdated(RegistrationState::Pending); }, Qt::QueuedConnection);
  state_ = RegistrationState::Pending;
  return true;
}

void Context::follow(const DeviceProfile& profile) {
  if (answer_.isActive()) return;
  registered_ = registered_ || profile.bbm_registered;
  if (registered_) report(static_cast<RegistrationState::Type>(profile.bbm_state));
}

void Context::report(RegistrationState::Type state) {
  if (state == state_) return;
  state_ = state;
  Q_EMIT registrationStateUpdated(state);
}

}  // namespace bb::platform::bbm
