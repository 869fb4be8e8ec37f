#include <QTimer>
#include <ctime>

#include "app/tarnelapp.h"
#include "engine/stamp.h"

void tarnelApp::load_datetime_template() {
  mDatetimeImage = ::load_datetime_template(time_color(mSettings));
}

void tarnelApp::generate_datetime() {
  const stamp_settings_s stamp = {time_format(mSettings), time_color(mSettings), time_position(mSettings)};
  ::generate_datetime(stamp, std::time(nullptr), mDatetimeImage);
}

void tarnelApp::start_datetime_timer() {
  if (!mDatetimeTimer) {
    mDatetimeTimer = new QTimer(this);
    connect(mDatetimeTimer, &QTimer::timeout, this, &tarnelApp::generate_datetime);
  }
  mDatetimeTimer->start(stamp_period_ms);
}
