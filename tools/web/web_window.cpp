#include "tools/web/web_window.h"

#include <QGuiApplication>
#include <QScreen>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTimer>
#include <QUrlQuery>
#include <QWebEngineDownloadRequest>
#include <QWebEnginePage>
#include <QWebEngineSettings>
#include <cmath>
#include <numbers>

namespace marbelot {
namespace {

using namespace std::chrono_literals;

constexpr auto patience = 60s;
constexpr double mapMetres = 1200;  // from one side to the other
constexpr double metresOfDegree = 111'320;
constexpr const char* attribution = "© OpenStreetMap contributors";

// Leads nowhere but to pages, in this very window, and is granted nothing.
class Page : public QWebEnginePage {
 public:
  Page(QWebEngineProfile* profile, QObject* parent) : QWebEnginePage(profile, parent) {
    connect(this, &QWebEnginePage::featurePermissionRequested, this,
            [this](const QUrl& origin, Feature feature) {
              setFeaturePermission(origin, feature, PermissionDeniedByUser);
            });
  }

 protected:
  bool acceptNavigationRequest(const QUrl& url, NavigationType, bool) override {
    const QString scheme = url.scheme();
    return scheme == "https" || scheme == "http" || url == QUrl("about:blank");
  }
  QWebEnginePage* createWindow(WebWindowType) override { return nullptr; }
  void javaScriptAlert(const QUrl&, const QString&) override {}
  bool javaScriptConfirm(const QUrl&, const QString&) override { return false; }
  bool javaScriptPrompt(const QUrl&, const QString&, const QString&, QString*) override {
    return false;
  }
  void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString&, int,
                                const QString&) override {}
  QStringList chooseFiles(FileSelectionMode, const QStringList&, const QStringList&) override {
    return {};
  }
};

// Other servers than the public ones can be named in the environment.
QUrl service(const char* variable, const char* standard) {
  return qEnvironmentVariableIsSet(variable) ? QUrl(qEnvironmentVariable(variable))
                                             : QUrl(standard);
}

// The map's own page for other programs to show, with a mark at the place.
QUrl mapUrl(const Place& place) {
  const double up = mapMetres / 2 / metresOfDegree;
  const double narrowing = std::cos(place.latitude * std::numbers::pi / 180);
  const double aside = up / std::max(narrowing, 0.01);
  const auto number = [](double degrees) { return QString::number(degrees, 'f', 6); };
  QUrlQuery query;
  query.addQueryItem("bbox",
                     QStringList{number(place.longitude - aside), number(place.latitude - up),
                                 number(place.longitude + aside), number(place.latitude + up)}
                         .join("%2C"));
  query.addQueryItem("layer", "mapnik");
  query.addQueryItem("marker", number(place.latitude) + "%2C" + number(place.longitude));
  QUrl url = service("MARBELOT_MAP_URL", "https://www.openstreetmap.org/export/embed.html");
  url.setQuery(query);
  return url;
}

}  // namespace

WebWindow::WebWindow(const QString& title, QSize contentSize)
    : view_(new QWebEngineView), message_(new QLabel) {
  setWindowTitle(title);
  QWebEngineSettings& settings = *profile_.settings();
  settings.setAttribute(QWebEngineSettings::JavascriptCanAccessClipboard, false);
  settings.setAttribute(QWebEngineSettings::JavascriptCanPaste, false);
  settings.setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, false);
  settings.setAttribute(QWebEngineSettings::PluginsEnabled, false);
  settings.setAttribute(QWebEngineSettings::ErrorPageEnabled, false);
  settings.setAttribute(QWebEngineSettings::ScreenCaptureEnabled, false);
  profile_.setHttpUserAgent(profile_.httpUserAgent() + ' ' + programName());
  connect(&profile_, &QWebEngineProfile::downloadRequested, this,
          [](QWebEngineDownloadRequest* download) { download->cancel(); });
  view_->setPage(new Page(&profile_, view_));
  view_->setContextMenuPolicy(Qt::NoContextMenu);
  connect(view_->page(), &QWebEnginePage::renderProcessTerminated, this,
          [this] { tell("The page has failed."); });

  message_->setTextFormat(Qt::PlainText);
  message_->setWordWrap(true);
  message_->setAlignment(Qt::AlignCenter);
  message_->setMargin(40);
  auto* const stack = new QStackedWidget;
  stack->addWidget(view_);
  stack->addWidget(message_);
  setCentralWidget(stack);
  resize(contentSize);
  if (const QScreen* screen = QGuiApplication::primaryScreen()) {
    const QRect area = screen->availableGeometry();
    move(area.center() - QRect(QPoint(0, 0), contentSize).center());
  }
}

// The page has to go before its profile.
WebWindow::~WebWindow() { delete takeCentralWidget(); }

void WebWindow::tell(const QString& message) {
  message_->setText(message);
  static_cast<QStackedWidget*>(centralWidget())->setCurrentWidget(message_);
}

void WebWindow::showPage(const QUrl& url) {
  auto* const limit = new QTimer(this);
  limit->setSingleShot(true);
  const QString host = url.host();
  connect(limit, &QTimer::timeout, this, [this, host] {
    view_->stop();
    tell(host + " has not answered for a minute.");
  });
  connect(view_, &QWebEngineView::loadFinished, this, [this, limit, host](bool done) {
    const bool inTime = limit->isActive();
    limit->stop();
    if (!done && inTime)
      tell(host + " cannot be reached, or has nothing to show. Is there a connection?");
  });
  limit->start(patience);
  view_->load(url);
}

void WebWindow::showAddress(const QString& address, const QString& notFoundTitle) {
  tell("Looking for " + address + "…");
  geocoder_ = std::make_unique<Geocoder>(
      service("MARBELOT_GEOCODER_URL", "https://nominatim.openstreetmap.org/search"));
  geocoder_->find(address, [this, notFoundTitle](const auto& place, const QString& problem) {
    placeFound(place, problem, notFoundTitle);
  });
}

void WebWindow::placeFound(const std::optional<Place>& place, const QString& problem,
                           const QString& notFoundTitle) {
  if (!place) {
    setWindowTitle(notFoundTitle);
    tell(problem.isEmpty() ? "OpenStreetMap knows no such place."
                           : "OpenStreetMap cannot be asked: " + problem);
    return;
  }
  auto* const name = new QLabel(place->name);
  name->setTextFormat(Qt::PlainText);
  auto* const source = new QLabel(attribution);
  source->setTextFormat(Qt::PlainText);
  statusBar()->addWidget(name, 1);
  statusBar()->addPermanentWidget(source);
  static_cast<QStackedWidget*>(centralWidget())->setCurrentWidget(view_);
  showPage(mapUrl(*place));
}

}  // namespace marbelot
