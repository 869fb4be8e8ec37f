#pragma once

// PNG files for the engine's tests.

#include <QBuffer>
#include <QImage>
#include <QtEndian>
#include <cstdint>
#include <string>

inline std::string png_of(const QImage& image) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  image.save(&buffer, "PNG");
  return bytes.toStdString();
}

inline std::uint32_t crc_of(const std::string& bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const char byte : bytes) {
    crc ^= static_cast<std::uint8_t>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
  }
  return ~crc;
}

/// A chunk with its length and checksum.
inline std::string png_chunk(const std::string& type, const std::string& content) {
  const auto number = [](std::uint32_t value) {
    std::string bytes(4, '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
  };
  return number(static_cast<std::uint32_t>(content.size())) + type + content + number(crc_of(type + content));
}

/// The same file with a header that claims another size, and a matching checksum.
inline std::string with_claimed_size(std::string png, std::uint32_t width, std::uint32_t height) {
  constexpr std::size_t type = 12, width_at = 16, height_at = 20, crc_at = 29;
  qToBigEndian(width, &png[width_at]);
  qToBigEndian(height, &png[height_at]);
  qToBigEndian(crc_of(png.substr(type, crc_at - type)), &png[crc_at]);
  return png;
}
