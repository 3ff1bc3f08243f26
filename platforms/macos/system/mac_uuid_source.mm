#include "platforms/macos/system/mac_uuid_source.h"

#import <Foundation/Foundation.h>

namespace pellow {

UUID MacUUIDSource::next() {
  UUID uuid;
  [NSUUID.UUID getUUIDBytes:uuid.bytes.data()];
  return uuid;
}

}  // namespace pellow
