#include "tests/system/made_film.h"

#include <gst/gst.h>

#include "platform/camera/gst_ptr.h"

using handset::ElementPtr;
using handset::MessagePtr;

std::string make_film(const std::string& path, const std::string& picture, const std::string& sound) {
  gst_init(nullptr, nullptr);
  std::string description = picture + " ! x264enc speed-preset=ultrafast key-int-max=15 qp-max=20 ! h264parse ! " +
                            "queue ! mp4mux name=mux ! filesink location=" + path;
  if (!sound.empty()) description += " " + sound + " ! audioconvert ! avenc_aac ! queue ! mux.";
  GError* problem = nullptr;
  const ElementPtr pipeline =
      ElementPtr::adopt(gst_parse_launch_full(description.c_str(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &problem));
  if (!pipeline) {
    const std::string reason = problem->message;
    g_error_free(problem);
    return reason;
  }
  gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
  const auto bus = handset::BusPtr::adopt(gst_element_get_bus(pipeline.get()));
  const MessagePtr message = MessagePtr::adopt(gst_bus_timed_pop_filtered(
      bus.get(), 60 * GST_SECOND, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
  return message && GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_EOS ? "" : "the film cannot be made";
}
