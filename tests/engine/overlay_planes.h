#pragma once

// An overlay record with random planes that this object owns.

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "engine/overlay.h"

struct overlay_planes {
  logo_image_s record{};

  overlay_planes(std::int32_t width, std::int32_t height, std::uint32_t seed)
      : luma_(width * height), chroma_(width * height / 2), alpha_(width * height), chroma_alpha_(width * height / 4) {
    std::minstd_rand random(seed);
    for (auto* plane : {&luma_, &chroma_, &alpha_, &chroma_alpha_}) {
      for (auto& byte : *plane) byte = static_cast<std::uint8_t>(random() >> 8);
    }
    for (auto& byte : chroma_alpha_) byte = byte > 170 ? 255 : byte;  // opaque blocks take a path of their own
    record = {0, 0, width, height, luma_.data(), chroma_.data(), alpha_.data(), chroma_alpha_.data(), true};
  }
  overlay_planes(const overlay_planes&) = delete;
  overlay_planes& operator=(const overlay_planes&) = delete;

  void fill_alpha(std::uint8_t value) {
    std::fill(alpha_.begin(), alpha_.end(), value);
    std::fill(chroma_alpha_.begin(), chroma_alpha_.end(), value);
  }

 private:
  std::vector<std::uint8_t> luma_, chroma_, alpha_, chroma_alpha_;
};
