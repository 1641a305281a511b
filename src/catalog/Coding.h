#pragma once
// Little-endian fixed-width encoding and decoding for every number in a catalog
// file. Every record codec goes through these helpers, byte by byte, so the
// layout never depends on the host's endianness or struct packing.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace gorvan {

inline void EncodeFixed16(uint8_t* dst, int16_t value) {
  const auto v = static_cast<uint16_t>(value);
  dst[0] = static_cast<uint8_t>(v);
  dst[1] = static_cast<uint8_t>(v >> 8);
}

inline void EncodeFixed32(uint8_t* dst, int32_t value) {
  const auto v = static_cast<uint32_t>(value);
  dst[0] = static_cast<uint8_t>(v);
  dst[1] = static_cast<uint8_t>(v >> 8);
  dst[2] = static_cast<uint8_t>(v >> 16);
  dst[3] = static_cast<uint8_t>(v >> 24);
}

inline void EncodeFixed64(uint8_t* dst, uint64_t v) {
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(dst, &v, sizeof v);
    return;
  }
  for (int i = 0; i < 8; ++i) dst[i] = static_cast<uint8_t>(v >> (8 * i));
}

inline void EncodeDouble(uint8_t* dst, double value) {
  EncodeFixed64(dst, std::bit_cast<uint64_t>(value));
}

inline int16_t DecodeFixed16(const uint8_t* src) {
  return static_cast<int16_t>(static_cast<uint16_t>(src[0]) |
                              static_cast<uint16_t>(src[1]) << 8);
}

inline int32_t DecodeFixed32(const uint8_t* src) {
  if constexpr (std::endian::native == std::endian::little) {
    // One load on little-endian hosts; the byte order is the file's either way.
    int32_t v;
    std::memcpy(&v, src, sizeof v);
    return v;
  }
  return static_cast<int32_t>(static_cast<uint32_t>(src[0]) |
                              static_cast<uint32_t>(src[1]) << 8 |
                              static_cast<uint32_t>(src[2]) << 16 |
                              static_cast<uint32_t>(src[3]) << 24);
}

inline uint64_t DecodeFixed64(const uint8_t* src) {
  if constexpr (std::endian::native == std::endian::little) {
    uint64_t v;
    std::memcpy(&v, src, sizeof v);
    return v;
  }
  uint64_t v = 0;
  for (int i = 7; i >= 0; --i) v = (v << 8) | src[i];
  return v;
}

inline double DecodeDouble(const uint8_t* src) {
  return std::bit_cast<double>(DecodeFixed64(src));
}

}  // namespace gorvan
