// The geocoder in front of a service of our own with canned answers.
#include "tools/web/geocoder.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

namespace marbelot {
namespace {

TEST(Places, AreReadFromWhatAServiceMayAnswer) {
  const auto place = placeFrom(
      R"([{"lat":"38.8977","lon":"-77.0365","name":"","display_name":"White House, Washington"}])");
  ASSERT_TRUE(place);
  EXPECT_EQ(place->latitude, 38.8977);
  EXPECT_EQ(place->longitude, -77.0365);
  EXPECT_EQ(place->name, "White House, Washington");
  EXPECT_EQ(placeFrom(R"([{"lat":1,"lon":2,"name":"a\n\u202E<b>\u0000 b"}])")->name, "a <b> b");
  const QByteArray longName(1 << 15, 'x');
  EXPECT_EQ(placeFrom("[{\"lat\":1,\"lon\":2,\"name\":\"" + longName + "\"}]")->name.size(), 200);
  for (const char* answer : {"", "[]", "{}", "null", "[", "[null]", "[[]]", "<html>",
                             R"([{"lat":"38.9"}])", R"([{"lat":"nan","lon":"1"}])",
                             R"([{"lat":"inf","lon":"1"}])", R"([{"lat":"1e999","lon":"1"}])",
                             R"([{"lat":"91","lon":"1"}])", R"([{"lat":"1","lon":"-181"}])",
                             R"([{"lat":"1 or 1","lon":"1"}])", R"([{"lat":true,"lon":{}}])"})
    EXPECT_FALSE(placeFrom(answer)) << answer;
}

struct GeocoderTest : testing::Test {
  // Network access needs an event loop, and that an application.
  static void SetUpTestSuite() {
    static int count = 1;
    static char name[] = "geocoder_test";
    static char* arguments[] = {name, nullptr};
    static const QCoreApplication application(count, arguments);
  }

  QTcpServer server;
  QByteArray request, answer;  // no answer: the service stays silent
  int requests = 0;

  GeocoderTest() {
    server.listen(QHostAddress::LocalHost);
    QObject::connect(&server, &QTcpServer::newConnection, &server, [this] {
      QTcpSocket* const socket = server.nextPendingConnection();
      QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
        request += socket->readAll();
        if (!request.contains("\r\n\r\n")) return;
        ++requests;
        if (answer.isEmpty()) return;
        socket->write(answer);
        socket->disconnectFromHost();
      });
    });
  }

  struct Outcome {
    std::optional<Place> place;
    QString problem;
  };
  Outcome ask(std::chrono::milliseconds patience = std::chrono::minutes(1)) {
    Geocoder geocoder(QUrl(QString("http://127.0.0.1:%1/search").arg(server.serverPort())),
                      patience);
    std::optional<Outcome> outcome;
    geocoder.find("1 Rue de l'Été & +?#", [&](const auto& place, const QString& problem) {
      outcome = Outcome{place, problem};
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return outcome.has_value(); }, 30'000));
    return outcome.value_or(Outcome{});
  }
  void answers(const QByteArray& body, const QByteArray& status = "200 OK") {
    answer = "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) +
             "\r\n\r\n" + body;
  }
};

TEST_F(GeocoderTest, AsksOnceAndSaysWhoAsks) {
  answers(R"([{"lat":"1.5","lon":"2.5","name":"here"}])");
  const Outcome outcome = ask();
  ASSERT_TRUE(outcome.place);
  EXPECT_EQ(outcome.place->name, "here");
  EXPECT_EQ(requests, 1);
  EXPECT_TRUE(
      request.startsWith("GET /search?q=1%20Rue%20de%20l%27%C3%89t%C3%A9%20%26%20%2B%3F%23&"
                         "format=jsonv2&limit=1 HTTP/1.1"))
      << request.toStdString();
  EXPECT_TRUE(request.contains("User-Agent: Marbelot/")) << request.toStdString();
}

TEST_F(GeocoderTest, SaysWhyThereIsNoAnswer) {
  EXPECT_FALSE(ask(std::chrono::milliseconds(20)).problem.isEmpty()) << "silence";
  answers("[]");
  EXPECT_TRUE(ask().problem.isEmpty()) << "nothing is there, and that is an answer";
  answers("busy", "503 Busy");
  EXPECT_FALSE(ask().problem.isEmpty());
  answers(QByteArray(1 << 22, ' ') + "[]");
  EXPECT_FALSE(ask().problem.isEmpty()) << "no answer is that long";
  answer = "HTTP/1.1 302 Found\r\nLocation: file:///etc/passwd\r\nContent-Length: 0\r\n\r\n";
  EXPECT_FALSE(ask().problem.isEmpty());
  answer = "no HTTP at all\r\n\r\n";
  EXPECT_FALSE(ask().place);
  server.close();
  EXPECT_FALSE(ask().problem.isEmpty()) << "nobody is there";
}

}  // namespace
}  // namespace marbelot
