#include "engine/failure_reports.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace pellow {
namespace {

constexpr std::size_t linesAtMost = 4;

std::string listed(const std::vector<PellowError>& failures) {
  std::string lines;
  const auto shown = std::min(failures.size(), linesAtMost);
  for (std::size_t index = 0; index < shown; ++index)
    lines += (index == 0 ? "" : "\n") + failures[index].errorDescription();
  if (failures.size() > shown) lines += fmt::format("\nAnd {} more.", failures.size() - shown);
  return lines;
}

}  // namespace

void FailureReports::report(const std::vector<PellowError>& failures) {
  for (const auto& failure : failures) around_.log.error("{}", failure.errorDescription());
  if (!collection_) return show(failures);
  auto& collected = collection_->failures;
  collected.insert(collected.end(), failures.begin(), failures.end());
}

void FailureReports::show(const std::vector<PellowError>& failures) {
  if (!failures.empty()) around_.tasks.start(tell(failures.front(), failures.size() - 1));
}

Task<> FailureReports::tell(PellowError first, std::size_t additional) {
  auto text = first.errorDescription();
  if (additional > 0) text += fmt::format("\n\nAnd {} more.", additional);
  co_await around_.alerts.present({.style = AlertStyle::warning,
                                   .messageText = "Pellow could not complete that action",
                                   .informativeText = std::move(text),
                                   .buttons = {"OK"}});
}

void FailureReports::noteRefusal(const TargetWindow& window) {
  if (!collection_) return;
  auto& refused = collection_->refusedOffscreen;
  if (std::ranges::find(refused, window) == refused.end()) refused.push_back(window);
}

Task<bool> FailureReports::offerToMinimize(const std::vector<TargetWindow>& windows,
                                           const std::vector<PellowError>& failures) {
  auto message = windows.size() == 1
                     ? std::string("One window would not slide off-screen")
                     : fmt::format("{} windows would not slide off-screen", windows.size());
  const auto chosen = co_await around_.alerts.present(
      {.style = AlertStyle::warning,
       .messageText = std::move(message),
       .informativeText = fmt::format("{}\n\n{}", listed(failures),
                                      std::string_view(around_.texts.minimizeInstead)),
       .buttons = {"Minimize Them", "Leave Them"}});
  co_return chosen == 0;
}

}  // namespace pellow
