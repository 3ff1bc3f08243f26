#pragma once

#include <QByteArray>
#include <QNetworkReply>
#include <expected>
#include <functional>
#include <memory>
#include <string>

#include "platform/queues.h"
#include "platform/system_error.h"

class QNetworkAccessManager;

namespace pellow {

// One download over HTTP or HTTPS, under way until it is destroyed; what begins with HTTPS stays
// there, wherever the server sends it. Main thread.
class FeedDownload {
 public:
  // The answer, later and once; the error is a sentence. It may end the download.
  using OnAnswer = std::function<void(std::expected<std::string, SystemError>)>;

  static constexpr qsizetype largestAnswer = 1 << 20;  // bytes

  // Gives up after `patience`, however much has come by then.
  FeedDownload(QNetworkAccessManager& network, MainQueue& queue, const std::string& address,
               const std::string& userAgent, Seconds patience, OnAnswer onAnswer);
  ~FeedDownload();
  FeedDownload(const FeedDownload&) = delete;
  FeedDownload& operator=(const FeedDownload&) = delete;

 private:
  void take();
  void finish();
  void giveUp(std::string_view why);

  std::string address_;
  OnAnswer onAnswer_;
  QNetworkReply* reply_;  // deleted by the main loop
  Subscription patience_;
  QByteArray received_;
};

}  // namespace pellow
