#include "platforms/simulated/uuid_source.h"

#include <cstdint>

namespace pellow::simulated {
namespace {

// A one-to-one mapping, so that different numbers stay different.
std::uint64_t scramble(std::uint64_t number) {
  number += 0x9E3779B97F4A7C15;
  number = (number ^ number >> 30) * 0xBF58476D1CE4E5B9;
  number = (number ^ number >> 27) * 0x94D049BB133111EB;
  return number ^ number >> 31;
}

}  // namespace

UUID UUIDSource::next() {
  const auto number = ++system_.state.uuidsMade;
  UUID uuid;
  for (std::size_t i = 0; i < 8; ++i) {
    uuid.bytes[i] = static_cast<std::uint8_t>(scramble(scramble(number)) >> 8 * i);
    uuid.bytes[8 + i] = static_cast<std::uint8_t>(scramble(number) >> 8 * i);
  }
  // Version 4, variant 1, like a random UUID.
  uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0F) | 0x40);
  uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3F) | 0x80);
  return uuid;
}

}  // namespace pellow::simulated
