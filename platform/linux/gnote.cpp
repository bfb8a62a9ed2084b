#include "platform/linux/gnote.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <utility>

#include "platform/text.h"

namespace marbelot {
namespace {

constexpr const char* name = "org.gnome.Gnote";
constexpr std::size_t titleCharacters = 80;
// Also for starting it on a slow machine.
constexpr int answerMilliseconds = 60'000;

using Done = std::function<void(const std::optional<std::string>& problem)>;
using Then = std::function<void(const QDBusMessage& answer)>;

std::string problemOf(const QDBusError& error) {
  if (error.type() == QDBusError::ServiceUnknown) return "Gnote is not installed";
  return text::shownTitle(error.message().toStdString());
}

QDBusPendingCall send(const QString& method, const QVariantList& arguments) {
  QDBusMessage message = QDBusMessage::createMethodCall(name, "/org/gnome/Gnote/RemoteControl",
                                                        "org.gnome.Gnote.RemoteControl", method);
  message.setArguments(arguments);
  return QDBusConnection::sessionBus().asyncCall(message, answerMilliseconds);
}

void call(const QString& method, const QVariantList& arguments, Done done, Then then) {
  auto* const asked = new QDBusPendingCallWatcher(send(method, arguments));
  QObject::connect(asked, &QDBusPendingCallWatcher::finished, asked,
                   [asked, done = std::move(done), then = std::move(then)] {
                     asked->deleteLater();
                     if (asked->isError()) {
                       done(problemOf(asked->error()));
                     } else {
                       then(asked->reply());
                     }
                   });
}

// Gnote keeps notes as XML, which has no place for most control characters; the first line is the
// note's title.
std::string noteText(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '\r') {
      if (at + 1 == text.size() || text[at + 1] != '\n') plain += '\n';
    } else if (static_cast<unsigned char>(c) >= ' ' || c == '\n' || c == '\t') {
      plain += c;
    }
  }
  return std::string(text::trimmedBlanksAndNewlines(plain));
}

void fill(const QString& note, const QString& text, const Done& done) {
  const auto failed = [note, done](const std::optional<std::string>& problem) {
    send("DeleteNote", {note});  // it is empty
    done(problem);
  };
  call("SetNoteContents", {note, text}, failed, [note, done, failed](const QDBusMessage& answer) {
    if (!answer.arguments().value(0).toBool()) return failed("");
    send("DisplayNote", {note});  // the note is there, whether or not it is shown
    done(std::nullopt);
  });
}

}  // namespace

void addGnote(const SharedText& text, const Done& done) {
  const std::string plain = noteText(*text);
  const std::string_view line = std::string_view(plain).substr(0, plain.find('\n'));
  const QString title =
      QString::fromStdString(std::string(line.substr(0, text::prefixBytes(line, titleCharacters))));
  const QString contents = QString::fromStdString(plain);
  const auto made = [contents, done](const QDBusMessage& answer) {
    const QString note = answer.arguments().value(0).toString();
    return note.isEmpty() ? done("") : fill(note, contents, done);
  };
  // A name that is taken gives no note; Gnote numbers those that are given none.
  call("CreateNamedNote", {title}, done, [made, done](const QDBusMessage& answer) {
    if (!answer.arguments().value(0).toString().isEmpty()) return made(answer);
    call("CreateNote", {}, done, made);
  });
}

}  // namespace marbelot
