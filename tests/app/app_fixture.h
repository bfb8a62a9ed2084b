// The whole application over services in memory, with files in a home folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "app/app_delegate.h"
#include "platform/memory/memory_platform.h"
#include "tests/support/temporary_home.h"

namespace marbelot {

class ApplicationTest : public testing::Test {
 protected:
  using Titles = std::vector<std::string>;

  void launch() {
    application_ = std::make_unique<AppDelegate>(desktop_.platform);
    application_->applicationDidFinishLaunching();
    desktop_.queue.drain();
  }
  virtual const Menu& menu() {
    desktop_.statusItem.open();
    return *desktop_.statusItem.menu;
  }
  MenuItemRef item(const Titles& path) { return memory::itemAt(menu(), path); }
  // What is done in the background for it is still to come.
  void ask(const Titles& path) {
    const MenuItemRef chosen = item(path);
    ASSERT_TRUE(chosen && chosen->choosable()) << path.back();
    desktop_.statusItem.delegate->menuItemChosen(*chosen);
  }
  void choose(const Titles& path) {
    ask(path);
    desktop_.queue.drain();
  }

  TemporaryHome home_;
  memory::MemoryPlatform desktop_;
  std::unique_ptr<AppDelegate> application_;
};

}  // namespace marbelot
