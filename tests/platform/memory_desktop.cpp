#include "platform/memory/memory_platform.h"
#include "tests/platform/conformance.h"

namespace marbelot {
namespace {

class MemoryDesktop : public TestDesktop {
 public:
  MemoryDesktop() { memory_.pasteboard.announces = true; }
  Platform& platform() override { return memory_.platform; }
  bool wait(const std::function<bool()>& done) override {
    for (int i = 0; i < 100 && !done(); ++i) {
      memory_.folderEvents.fire();
      memory_.queue.advance(0.01);
    }
    return done();
  }

 private:
  memory::MemoryPlatform memory_;
};

std::unique_ptr<TestDesktop> makeDesktop() { return std::make_unique<MemoryDesktop>(); }

INSTANTIATE_TEST_SUITE_P(Memory, Conformance, testing::Values(&makeDesktop));

}  // namespace
}  // namespace marbelot
