// A window on the web that keeps nothing and grants nothing.
#pragma once

#include <QLabel>
#include <QMainWindow>
#include <QUrl>
#include <QWebEngineProfile>
#include <QWebEngineView>
#include <memory>
#include <optional>

#include "tools/web/geocoder.h"

namespace marbelot {

class WebWindow : public QMainWindow {
 public:
  WebWindow(const QString& title, QSize contentSize);
  ~WebWindow() override;

  void showPage(const QUrl& url);
  // Finds the address and shows it on a map; `notFoundTitle` is the window's title if that fails.
  void showAddress(const QString& address, const QString& notFoundTitle);

 private:
  void placeFound(const std::optional<Place>& place, const QString& problem,
                  const QString& notFoundTitle);
  void tell(const QString& message);

  QWebEngineProfile profile_;  // without a name: nothing of it is ever written
  QWebEngineView* view_;
  QLabel* message_;
  std::unique_ptr<Geocoder> geocoder_;
};

}  // namespace marbelot
