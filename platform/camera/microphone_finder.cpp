#include "platform/camera/microphone_finder.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <thread>

namespace handset {
namespace {

constexpr std::chrono::seconds answer_patience{2};
constexpr char bin_prefix[] = "gst:";

struct Offer {
  FoundMicrophone microphone;
  ObjectPtr<GstDevice> device;
};

/// ALSA prints pages of errors on a machine without sound cards, so do not ask it there.
bool has_alsa_capture() {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/dev/snd", error)) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with("pcm") && name.ends_with("c")) return true;
  }
  return false;
}

bool has_property(GstElement* element, const char* name) {
  return g_object_class_find_property(G_OBJECT_GET_CLASS(element), name) != nullptr;
}

/// A device's recordable element, whose time stamps are the system clock's rather than counted from samples, or null.
ElementPtr element_of(GstDevice* device) {
  ElementPtr element = ElementPtr::adopt(gst_device_create_element(device, nullptr));
  if (!element || !has_property(element.get(), "device")) return {};
  gst_util_set_object_arg(G_OBJECT(element.get()), "provide-clock", "false");
  gst_util_set_object_arg(G_OBJECT(element.get()), "slave-method", "re-timestamp");
  return element;
}

/// ALSA's "hw:1,0" counts cards in order of discovery; "hw:CARD=id,DEV=0" survives a restart.
std::string lasting_name(const std::string& device) {
  int card = 0;
  int number = 0;
  if (std::sscanf(device.c_str(), "hw:%d,%d", &card, &number) != 2) return device;
  std::string id;
  std::ifstream("/proc/asound/card" + std::to_string(card) + "/id") >> id;
  return id.empty() ? device : "hw:CARD=" + id + ",DEV=" + std::to_string(number);
}

Offer describe(ObjectPtr<GstDevice> device) {
  Offer offer;
  const GStringPtr label(gst_device_get_display_name(device.get()), g_free);
  offer.microphone.label = label.get();
  if (const ElementPtr element = element_of(device.get())) {
    char* identity = nullptr;
    g_object_get(element.get(), "device", &identity, nullptr);
    if (identity != nullptr) offer.microphone.identity = lasting_name(identity);
    g_free(identity);
  }
  if (GstStructure* properties = gst_device_get_properties(device.get())) {
    gboolean is_default = FALSE;
    gst_structure_get_boolean(properties, "is-default", &is_default);
    offer.microphone.is_default = is_default != FALSE;
    const char* kind = gst_structure_get_string(properties, "device.class");
    offer.microphone.is_monitor = kind != nullptr && std::string(kind) == "monitor";
    gst_structure_free(properties);
  }
  offer.device = std::move(device);
  return offer;
}

/// Sources of one provider. It is queried without being started: the list it keeps goes stale with its server.
std::vector<Offer> offers_of(const char* provider_name) {
  std::vector<Offer> offers;
  const auto provider = ObjectPtr<GstDeviceProvider>::adopt(gst_device_provider_factory_get_by_name(provider_name));
  if (!provider) return offers;
  GList* devices = gst_device_provider_get_devices(provider.get());
  for (GList* entry = devices; entry != nullptr; entry = entry->next) {
    auto device = ObjectPtr<GstDevice>::adopt(GST_DEVICE(entry->data));
    if (!gst_device_has_classes(device.get(), "Audio/Source")) continue;
    Offer offer = describe(std::move(device));
    if (!offer.microphone.identity.empty()) offers.push_back(std::move(offer));
  }
  g_list_free(devices);
  const auto rank = [](const Offer& offer) {
    return offer.microphone.is_monitor ? 2 : offer.microphone.is_default ? 0 : 1;
  };
  std::stable_sort(offers.begin(), offers.end(), [&](const Offer& a, const Offer& b) { return rank(a) < rank(b); });
  return offers;
}

/// PipeWire is queried through its PulseAudio server: for sound, its own devices (0.3.65) create sinks where sources
/// are wanted.
std::vector<Offer> offers_now() {
  std::vector<Offer> offers = offers_of("pulsedeviceprovider");
  if (offers.empty() && has_alsa_capture()) offers = offers_of("alsadeviceprovider");
  return offers;
}

std::vector<FoundMicrophone> microphones_of(const std::vector<Offer>& offers) {
  std::vector<FoundMicrophone> found;
  for (const Offer& offer : offers) found.push_back(offer.microphone);
  return found;
}

std::string folded(const std::string& text) {
  const GStringPtr valid(g_utf8_make_valid(text.c_str(), static_cast<gssize>(text.size())), g_free);
  const GStringPtr fold(g_utf8_casefold(valid.get(), -1), g_free);
  return fold.get();
}

ElementPtr parse_bin(const std::string& description, std::string* why) {
  GError* error = nullptr;
  ElementPtr bin = ElementPtr::adopt(
      gst_parse_bin_from_description_full(description.c_str(), TRUE, nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &error));
  if (!bin) {
    *why = error->message;
    g_error_free(error);
  }
  return bin;
}

/// Settings that are not device names.
bool is_reserved(const std::string& setting) {
  return setting == "default" || setting == "none" || setting == "tone" || setting.starts_with(bin_prefix);
}

std::vector<std::string> descriptions_of(const std::string& setting) {
  if (setting == "none") return {};
  if (setting == "tone") return {"audiotestsrc is-live=true wave=sine freq=440 volume=0.25 samplesperbuffer=480"};
  if (setting != "default") return {setting.substr(sizeof bin_prefix - 1)};
  std::vector<std::string> sources = {"pulsesrc provide-clock=false slave-method=re-timestamp client-name=Morvane"};
  if (has_alsa_capture()) sources.emplace_back("alsasrc provide-clock=false slave-method=re-timestamp");
  return sources;
}

}  // namespace

std::vector<FoundMicrophone> find_microphones(bool* answered) {
  struct Answer {
    std::mutex mutex;  ///< guards the rest
    std::condition_variable changed;
    bool there = false;
    std::vector<FoundMicrophone> found;
  };
  gst_init(nullptr, nullptr);
  const auto answer = std::make_shared<Answer>();
  std::thread([answer] {
    std::vector<FoundMicrophone> found = microphones_of(offers_now());
    const std::lock_guard lock(answer->mutex);
    answer->found = std::move(found);
    answer->there = true;
    answer->changed.notify_all();
  }).detach();
  std::unique_lock lock(answer->mutex);
  const bool there = answer->changed.wait_for(lock, answer_patience, [&] { return answer->there; });
  if (answered != nullptr) *answered = there;
  return answer->found;
}

MicrophoneChoice choose_microphone(const std::vector<FoundMicrophone>& found, const std::string& name) {
  const std::string wanted = folded(name);
  enum Fit { none, part_of_monitor, part, whole };
  Fit best = none;
  std::vector<std::size_t> matches;
  for (std::size_t i = 0; i < found.size(); ++i) {
    const std::string label = folded(found[i].label);
    const std::string identity = folded(found[i].identity);
    Fit fit = none;
    if (label == wanted || identity == wanted) {
      fit = whole;
    } else if (label.find(wanted) != std::string::npos || identity.find(wanted) != std::string::npos) {
      fit = found[i].is_monitor ? part_of_monitor : part;
    }
    if (fit > best) matches.clear();
    best = std::max(best, fit);
    if (fit == best && fit != none) matches.push_back(i);
  }
  if (matches.size() == 1) return {static_cast<int>(matches.front()), {}};
  std::string complaint = matches.empty() ? "no microphone is called \"" + name + "\"; "
                                          : "more than one microphone is called \"" + name + "\"; ";
  complaint += found.empty() ? "there is none" : "there are:";
  for (std::size_t i = 0; i < found.size(); ++i) {
    complaint += (i == 0 ? " " : ", ") + found[i].label + " (" + found[i].identity + ")";
  }
  return {-1, complaint};
}

std::string check_microphone(const std::string& setting) {
  gst_init(nullptr, nullptr);
  std::string why;
  if (setting.starts_with(bin_prefix)) parse_bin(descriptions_of(setting).front(), &why);
  if (is_reserved(setting)) return why;
  bool answered = false;
  const std::vector<FoundMicrophone> found = find_microphones(&answered);
  return answered ? choose_microphone(found, setting).complaint : "";
}

std::vector<ElementPtr> make_microphone_elements(const std::string& setting, std::string* why) {
  std::vector<ElementPtr> elements;
  if (is_reserved(setting)) {
    for (const std::string& description : descriptions_of(setting)) {
      if (ElementPtr element = parse_bin(description, why)) elements.push_back(std::move(element));
    }
    return elements;
  }
  const std::vector<Offer> offers = offers_now();
  const MicrophoneChoice choice = choose_microphone(microphones_of(offers), setting);
  *why = choice.complaint;
  if (choice.index < 0) return elements;
  if (ElementPtr element = element_of(offers[static_cast<std::size_t>(choice.index)].device.get())) {
    elements.push_back(std::move(element));
  }
  return elements;
}

}  // namespace handset
