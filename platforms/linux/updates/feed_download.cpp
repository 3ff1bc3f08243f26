#include "platforms/linux/updates/feed_download.h"

#include <fmt/format.h>

#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <utility>

namespace pellow {

FeedDownload::FeedDownload(QNetworkAccessManager& network, MainQueue& queue,
                           const std::string& address, const std::string& userAgent,
                           Seconds patience, OnAnswer onAnswer)
    : address_(address),
      onAnswer_(std::move(onAnswer)),
      patience_(queue.after(patience, [this] { giveUp("the server does not answer in time"); })) {
  QNetworkRequest request(QUrl(QString::fromStdString(address)));
  request.setHeader(QNetworkRequest::UserAgentHeader, QString::fromStdString(userAgent));
  request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                       QNetworkRequest::NoLessSafeRedirectPolicy);
  reply_ = network.get(request);
  QObject::connect(reply_, &QNetworkReply::readyRead, reply_, [this] { take(); });
  QObject::connect(reply_, &QNetworkReply::finished, reply_, [this] { finish(); });
}

FeedDownload::~FeedDownload() {
  reply_->disconnect();
  reply_->abort();
  reply_->deleteLater();
}

void FeedDownload::take() {
  received_ += reply_->readAll();
  if (received_.size() > largestAnswer) giveUp("the answer is too large");
}

void FeedDownload::finish() {
  received_ += reply_->readAll();
  if (received_.size() > largestAnswer) return giveUp("the answer is too large");
  const auto status = reply_->attribute(QNetworkRequest::HttpStatusCodeAttribute);
  if (status.isValid() && status.toInt() / 100 != 2)
    return giveUp(fmt::format("the server answers {}", status.toInt()));
  if (reply_->error() != QNetworkReply::NoError) return giveUp(reply_->errorString().toStdString());
  const auto answer = std::exchange(onAnswer_, nullptr);
  if (answer) answer(received_.toStdString());
}

// The answer may end the download: touch nothing of it afterwards.
void FeedDownload::giveUp(std::string_view why) {
  auto problem = SystemError{fmt::format("Could not read {}: {}.", address_, why)};
  reply_->disconnect();
  const auto answer = std::exchange(onAnswer_, nullptr);
  if (answer) answer(std::unexpected(std::move(problem)));
}

}  // namespace pellow
