#include "platforms/macos/system/log_sink.h"

#import <os/log.h>

namespace pellow {
namespace {

os_log_type_t typeOf(LogLevel level) {
  switch (level) {
    case LogLevel::info:
      return OS_LOG_TYPE_INFO;
    case LogLevel::standard:
      return OS_LOG_TYPE_DEFAULT;
    case LogLevel::warning:
    case LogLevel::error:
      return OS_LOG_TYPE_ERROR;
  }
  return OS_LOG_TYPE_DEFAULT;
}

}  // namespace

Log::Sink makeLogSink() {
  os_log_t const log = os_log_create("com.velloway.pellow", "action");
  return [log](LogLevel level, std::string_view message) {
    os_log_with_type(log, typeOf(level), "%{public}.*s", static_cast<int>(message.size()),
                     message.data());
  };
}

}  // namespace pellow
