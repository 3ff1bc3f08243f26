#include "platforms/macos/system/mac_login_item.h"

#import <ServiceManagement/ServiceManagement.h>

#include "platforms/macos/foundation/error.h"

namespace pellow {
namespace {

// The numbers of kSMErrorJobNotFound and kSMErrorAlreadyRegistered.
constexpr NSInteger notFound = 6;
constexpr NSInteger alreadyRegistered = 12;

std::expected<void, SystemError> enable(SMAppService* service) {
  NSError* error = nil;
  const bool isRegistered =
      [service registerAndReturnError:&error] || error.code == alreadyRegistered;
  if (service.status == SMAppServiceStatusRequiresApproval)
    return std::unexpected(
        SystemError{"The user has to allow it in System Settings > General > Login Items."});
  if (!isRegistered) return std::unexpected(toSystemError(error));
  return {};
}

std::expected<void, SystemError> disable(SMAppService* service) {
  NSError* error = nil;
  if (![service unregisterAndReturnError:&error] && error.code != notFound)
    return std::unexpected(toSystemError(error));
  return {};
}

}  // namespace

bool MacLoginItem::isEnabled() const {
  return SMAppService.mainAppService.status == SMAppServiceStatusEnabled;
}

std::expected<void, SystemError> MacLoginItem::setEnabled(bool enabled) {
  SMAppService* const service = SMAppService.mainAppService;
  return enabled ? enable(service) : disable(service);
}

}  // namespace pellow
