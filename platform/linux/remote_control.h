// The running program on the session bus, and the calls that reach it.
#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>

#include "platform/platform.h"

namespace marbelot {

inline constexpr const char* busName = "org.marbelot.Marbelot";
inline constexpr const char* busPath = "/org/marbelot/Marbelot";
inline constexpr const char* busInterface = "org.marbelot.Marbelot";

// The interface org.marbelot.Marbelot. Invoke… return an error for the user, empty when done;
// `object` holds one text or none.
class RemoteControl : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.marbelot.Marbelot")

 public:
  // False when there is no session bus or the name is taken.
  bool publish();
  void serve(RemoteRequests requests) { requests_ = std::move(requests); }

 public Q_SLOTS:
  // The methods' names on the bus. NOLINTBEGIN(readability-identifier-naming)
  QString Menu() { return call(requests_.menu); }
  QString InvokeTitles(const QString& titles);
  QString InvokeAction(const QString& action, const QStringList& object);
  QString Windows() { return call(requests_.windows); }
  QString Press(const QString& window, const QString& spec);
  QString History(const QString& search, const QString& category);
  QString CopyEntry(const QString& id) { return call(requests_.copyEntry, id); }
  QString DeleteEntry(const QString& id) { return call(requests_.deleteEntry, id); }
  void PopUpMenu();
  void Quit();
  // NOLINTEND(readability-identifier-naming)

 private:
  static QString call(const std::function<std::string()>& request);
  static QString call(const std::function<std::string(const std::string&)>& request,
                      const QString& argument);
  RemoteRequests requests_;
};

// Asks the running program to open its menu. False when it cannot be reached.
bool askRunningProgramForMenu();

}  // namespace marbelot
