// The running program on the session bus, and the call that reaches it.
#pragma once

#include <QDBusVirtualObject>

#include "platform/platform.h"

namespace marbelot {

inline constexpr const char* busName = "org.marbelot.Marbelot";
inline constexpr const char* busPath = "/org/marbelot/Marbelot";
inline constexpr const char* busInterface = "org.marbelot.Marbelot";

// The interface org.marbelot.Marbelot: a method for each request, which takes texts and returns
// one.
class RemoteControl : public QDBusVirtualObject {
 public:
  // False when there is no session bus or the name is taken.
  bool publish();
  // Until then each method fails, with a reason.
  void serve(RemoteRequests requests) { requests_ = std::move(requests); }

  QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

 private:
  RemoteRequests requests_;
};

// Asks the running program to open its menu, or lets it start on. False when it cannot be reached.
bool askRunningProgramForMenu();

}  // namespace marbelot
