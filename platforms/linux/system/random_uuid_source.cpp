#include "platforms/linux/system/random_uuid_source.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace pellow {

UUID RandomUUIDSource::next() {
  UUID uuid;
  if (getentropy(uuid.bytes.data(), uuid.bytes.size()) != 0)
    throw std::system_error(errno, std::generic_category(), "no random numbers");
  uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0F) | 0x40);  // version 4
  uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3F) | 0x80);  // variant 1
  return uuid;
}

}  // namespace pellow
