#include "platforms/linux/system/termination_signals.h"

#include <pthread.h>
#include <sys/signalfd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

namespace pellow {
namespace {

constexpr std::array numbers = {SIGTERM, SIGINT, SIGHUP};  // in the order of TerminationSignal

sigset_t setOf(auto... signals) {
  sigset_t set;
  sigemptyset(&set);
  (sigaddset(&set, signals), ...);
  return set;
}

void endProcessBy(int number) {
  std::signal(number, SIG_DFL);
  const auto set = setOf(number);
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
  std::raise(number);
}

}  // namespace

TerminationSignals::TerminationSignals()
    : handlers_(std::make_shared<std::array<Handler, numbers.size()>>()) {
  const auto set = setOf(SIGTERM, SIGINT, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  descriptor_ = FileDescriptor(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
  if (!descriptor_) throw std::system_error(errno, std::generic_category(), "no signal descriptor");
}

void TerminationSignals::processPending() {
  signalfd_siginfo signal{};
  while (read(descriptor_.number(), &signal, sizeof signal) == sizeof signal)
    deliver(static_cast<int>(signal.ssi_signo));
}

void TerminationSignals::deliver(int number) {
  const auto index = std::ranges::find(numbers, number) - numbers.begin();
  const auto handler = (*handlers_)[static_cast<std::size_t>(index)];
  if (!handler) return endProcessBy(number);
  if (const auto call = *handler) call();
}

Subscription TerminationSignals::on(TerminationSignal signal, std::function<void()> handler) {
  const auto entry = std::make_shared<std::function<void()>>(std::move(handler));
  const auto index = std::to_underlying(signal);
  (*handlers_)[static_cast<std::size_t>(index)] = entry;
  return Subscription([entry = std::weak_ptr(entry)] {
    if (const auto pending = entry.lock()) *pending = nullptr;
  });
}

}  // namespace pellow
