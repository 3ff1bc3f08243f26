#include "platforms/linux/system/thread_serial_queue.h"

#include <pthread.h>

namespace pellow {

ThreadSerialQueue::ThreadSerialQueue(const std::string& label) {
  thread_ = std::thread([works = work_] {
    while (works->waitForNext()) works->runNext([](Work work) { work(); });
  });
  // The kernel keeps 15 characters: the last word of "com.velloway.pellow.actions" tells most.
  const auto name = label.substr(label.rfind('.') + 1).substr(0, 15);
  pthread_setname_np(thread_.native_handle(), name.c_str());
}

ThreadSerialQueue::~ThreadSerialQueue() {
  work_->end();
  thread_.join();
}

}  // namespace pellow
