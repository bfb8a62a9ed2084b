#include "tools/web/geocoder.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrlQuery>
#include <cmath>
#include <memory>

#include "platform/json.h"

namespace marbelot {
namespace {

constexpr qint64 longestAnswer = 64 * 1024;  // bytes
constexpr qsizetype longestName = 200;       // UTF-16 units

// A number, or the text of one.
std::optional<double> degrees(const Value& place, const char* key, double most) {
  const Value* const found = field(place, key);
  const SharedText text = textIn(place, key);
  bool isNumber = found && found->asDouble();
  const double number = isNumber ? *found->asDouble()
                        : text   ? QByteArray::fromStdString(*text).toDouble(&isNumber)
                                 : 0;
  if (!isNumber || !std::isfinite(number) || std::abs(number) > most) return std::nullopt;
  return number;
}

// What anybody may have written into the map, as one line.
QString plainLine(const QString& text) {
  QString line;
  for (const QChar c : text.left(longestName)) {
    if (c.isSpace() || c.category() == QChar::Other_Control) {
      line += ' ';
    } else if (c.category() != QChar::Other_Format) {
      line += c;
    }
  }
  return line.simplified();
}

}  // namespace

QByteArray programName() { return "Marbelot/" MARBELOT_VERSION " (desktop clipboard utility)"; }

std::optional<Place> placeFrom(const QByteArray& json) {
  const auto answer = valueFromJson({json.data(), static_cast<std::size_t>(json.size())});
  const auto* const places = answer ? answer->asList() : nullptr;
  if (!places || places->empty()) return std::nullopt;
  const Value& first = places->front();
  const auto latitude = degrees(first, "lat", 90);
  const auto longitude = degrees(first, "lon", 180);
  if (!latitude || !longitude) return std::nullopt;
  SharedText name = textIn(first, "name");
  if (!name || name->empty()) name = textIn(first, "display_name");
  return Place{*latitude, *longitude, name ? plainLine(QString::fromStdString(*name)) : QString()};
}

void Geocoder::find(const QString& address, Found found) {
  QUrlQuery query;
  // A plus would be read as a blank.
  query.addQueryItem("q", QString::fromLatin1(QUrl::toPercentEncoding(address)));
  query.addQueryItem("format", "jsonv2");
  query.addQueryItem("limit", "1");
  QUrl url = service_;
  url.setQuery(query);
  QNetworkRequest request(url);
  request.setHeader(QNetworkRequest::UserAgentHeader, programName());
  request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                       QNetworkRequest::SameOriginRedirectPolicy);
  request.setTransferTimeout(static_cast<int>(patience_.count()));
  QNetworkReply* const reply = network_.get(request);
  QObject::connect(reply, &QNetworkReply::downloadProgress, reply, [reply](qint64 received) {
    if (received > longestAnswer) reply->abort();
  });
  QObject::connect(reply, &QNetworkReply::finished, &network_, [reply, found = std::move(found)] {
    reply->deleteLater();
    if (reply->error() != QNetworkReply::NoError) {
      found(std::nullopt, plainLine(reply->errorString()));
    } else if (reply->bytesAvailable() > longestAnswer) {  // which came at once
      found(std::nullopt, "its answer is too long");
    } else {
      found(placeFrom(reply->read(longestAnswer)), {});
    }
  });
}

}  // namespace marbelot
