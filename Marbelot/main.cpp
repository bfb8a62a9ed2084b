#include "app/app_delegate.h"
#include "platform/backend.h"

int main(int argc, char** argv) {
  return marbelot::runApplication(argc, argv, [](marbelot::Platform& platform) {
    auto application = std::make_shared<marbelot::AppDelegate>(platform);
    application->applicationDidFinishLaunching();
    return application;
  });
}
