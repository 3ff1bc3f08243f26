#include "platforms/macos/foundation/error.h"

#include "platforms/macos/foundation/text.h"

namespace pellow {

SystemError toSystemError(NSError* error) {
  auto sentence = toText(error.localizedDescription);
  if (sentence.empty()) sentence = "The system gives no reason.";
  return {std::move(sentence)};
}

}  // namespace pellow
