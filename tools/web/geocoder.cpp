#include "tools/web/geocoder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrlQuery>
#include <cmath>
#include <memory>

namespace marbelot {
namespace {

constexpr qint64 longestAnswer = 64 * 1024;  // bytes
constexpr qsizetype longestName = 200;       // UTF-16 units

std::optional<double> degrees(const QJsonValue& value, double most) {
  bool isNumber = value.isDouble();
  const double number = isNumber ? value.toDouble() : value.toString().toDouble(&isNumber);
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
  const QJsonArray places = QJsonDocument::fromJson(json).array();
  const QJsonObject first = places.isEmpty() ? QJsonObject() : places.first().toObject();
  const auto latitude = degrees(first["lat"], 90);
  const auto longitude = degrees(first["lon"], 180);
  if (!latitude || !longitude) return std::nullopt;
  const QString name = first["name"].toString();
  return Place{*latitude, *longitude,
               plainLine(name.isEmpty() ? first["display_name"].toString() : name)};
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
