#include "platform/camera/device_element.h"

namespace handset {
namespace {

/// Converts a camera's data into raw pictures.
const char* decoder_of(CameraWay::Coding coding) {
  switch (coding) {
    case CameraWay::Coding::raw:
      break;
    case CameraWay::Coding::jpeg:
      return " ! jpegdec";
    case CameraWay::Coding::h264:
      return " ! h264parse ! avdec_h264";
    case CameraWay::Coding::bayer:
      return " ! bayer2rgb";
  }
  return "";
}

/// The element that reads from the camera itself.
ElementPtr make_head(const FoundCamera& camera, bool through_node) {
  if (through_node) {
    GstElement* element = gst_element_factory_make("v4l2src", "device");
    // Its pictures carry the kernel's capture times; arrival times would jitter.
    if (element != nullptr) g_object_set(element, "device", camera.node.c_str(), nullptr);
    return ElementPtr::adopt(element);
  }
  GstElement* element = camera.device ? gst_device_create_element(camera.device.get(), "device") : nullptr;
  // PipeWire hands out buffers without timestamps unless it is told to stamp them.
  if (element != nullptr) g_object_set(element, "do-timestamp", TRUE, nullptr);
  return ElementPtr::adopt(element);
}

}  // namespace

ElementPtr parse_bin(const std::string& description, std::string* error, bool open_ends) {
  GError* problem = nullptr;
  GstElement* bin = gst_parse_bin_from_description_full(description.c_str(), open_ends, nullptr,
                                                        GST_PARSE_FLAG_FATAL_ERRORS, &problem);
  if (bin == nullptr || problem != nullptr) {
    *error = problem != nullptr ? problem->message : "not a pipeline";
    g_clear_error(&problem);
    if (bin != nullptr) gst_object_unref(gst_object_ref_sink(bin));
    return {};
  }
  return ElementPtr::adopt(bin);
}

std::string caps_of(const ChosenWay& choice, camera_res_t size) {
  std::string caps;
  switch (choice.way->coding) {
    case CameraWay::Coding::raw:
      caps = "video/x-raw";
      break;
    case CameraWay::Coding::jpeg:
      caps = "image/jpeg";
      break;
    case CameraWay::Coding::h264:
      caps = "video/x-h264";
      break;
    case CameraWay::Coding::bayer:
      caps = "video/x-bayer";
      break;
  }
  if (!choice.way->format.empty()) caps += ",format=" + choice.way->format;
  caps += ",width=" + std::to_string(size.width) + ",height=" + std::to_string(size.height);
  if (choice.rate.numerator <= 0) return caps;
  const auto fraction = [](int n, int d) { return std::to_string(n) + "/" + std::to_string(d); };
  const FrameRate& rate = choice.rate;
  const std::string exact = fraction(rate.numerator, rate.denominator);
  if (choice.exact) return caps + ",framerate=" + exact;
  // As fine as possible within the range of an int.
  const std::string least = rate.numerator < 100'000'000 && rate.denominator < 100'000'000
                                ? fraction(rate.numerator * 19, rate.denominator * 20)
                                : exact;
  return caps + ",framerate=[" + least + "," + exact + "]";
}

ElementPtr make_device_element(const FoundCamera& camera, int way, camera_res_t size, int frame_rate,
                               std::string* error) {
  const bool through_node = camera.direct && way == 0;
  const bool own_modes = through_node || !camera.direct || camera.other_modes.empty();
  const CameraMode* mode = choose_mode(own_modes ? camera.modes : camera.other_modes, size, frame_rate);
  const ElementPtr head = make_head(camera, through_node);
  if (!head || mode == nullptr) {
    *error = "the camera is gone";
    return {};
  }
  const ChosenWay choice = choose_way(*mode, frame_rate);
  // If a driver does not state the pixel aspect ratio, it would get the oddest one the pipeline can handle.
  const std::string caps = caps_of(choice, mode->size);
  const ElementPtr tail = parse_bin(
      "capsfilter caps=\"" + caps + ",pixel-aspect-ratio=1/1;" + caps + "\"" + decoder_of(choice.way->coding), error);
  if (!tail) return {};
  auto bin = ElementPtr::adopt(gst_bin_new("camera"));
  gst_bin_add_many(GST_BIN(bin.get()), head.get(), tail.get(), nullptr);
  if (!gst_element_link(head.get(), tail.get())) {
    *error = "the camera does not deliver what it has listed";
    return {};
  }
  const auto pad = ObjectPtr<GstPad>::adopt(gst_element_get_static_pad(tail.get(), "src"));
  gst_element_add_pad(bin.get(), gst_ghost_pad_new("src", pad.get()));
  return bin;
}

}  // namespace handset
