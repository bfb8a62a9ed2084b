// Where an address is, asked of OpenStreetMap's Nominatim.
#pragma once

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QString>
#include <QUrl>
#include <chrono>
#include <functional>
#include <optional>

namespace marbelot {

struct Place {
  double latitude = 0;   // degrees
  double longitude = 0;  // degrees
  QString name;          // plain text on one line
};

// The first place in the service's answer; none when there is none, or it is not to be understood.
std::optional<Place> placeFrom(const QByteArray& json);

class Geocoder {
 public:
  // `problem`: why there is no answer, for the user; empty when there was one.
  using Found = std::function<void(const std::optional<Place>& place, const QString& problem)>;

  // `service`: its search's URL. The service is asked once for each call of `find`, and told who
  // asks, as its rules want it.
  explicit Geocoder(QUrl service, std::chrono::milliseconds patience = std::chrono::seconds(20))
      : service_(std::move(service)), patience_(patience) {}

  // Answers once, unless this is gone by then.
  void find(const QString& address, Found found);

 private:
  const QUrl service_;
  const std::chrono::milliseconds patience_;
  QNetworkAccessManager network_;
};

// Who asks: the programs's name and version and where it comes from.
QByteArray programName();

}  // namespace marbelot
