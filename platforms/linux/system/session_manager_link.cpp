#include "platforms/linux/system/session_manager_link.h"

#include <X11/ICE/ICElib.h>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "base/log.h"
#include "platforms/linux/system/log_sink.h"
#include "platforms/posix/file_descriptor.h"

namespace pellow {
namespace {

// Qt would try to read from the broken connection again and again: nothing ever comes from what
// takes its number.
void connectionBroke(IceConn connection) {
  const FileDescriptor silence(eventfd(0, EFD_CLOEXEC));
  dup3(silence.number(), IceConnectionNumber(connection), O_CLOEXEC);
  Log(makeLogSink()).standard("The session manager is gone; Pellow goes on without it");
}

}  // namespace

void outliveSessionManager() { IceSetIOErrorHandler(connectionBroke); }

}  // namespace pellow
