// Settings in the program's own user defaults domain, their large texts in files beside it: the
// preferences service is meant for small values.
#import <Foundation/Foundation.h>

#include "platform/files.h"
#include "platform/large_texts.h"
#include "platform/macos/conversions.h"
#include "platform/macos/services.h"

namespace marbelot {
namespace {

// Lists inside lists deeper than any setting's are cut off, so that a domain edited by hand cannot
// exhaust the stack.
constexpr int kDeepest = 16;

id objectOf(const Value& value);

struct ToObject {
  id operator()(bool flag) const { return [NSNumber numberWithBool:flag]; }
  id operator()(std::int64_t number) const { return @(number); }
  id operator()(double number) const { return @(number); }
  id operator()(const SharedText& text) const { return nsString(text ? *text : std::string()); }
  id operator()(const Value::List& list) const {
    NSMutableArray* objects = [NSMutableArray arrayWithCapacity:list.size()];
    for (const Value& entry : list) [objects addObject:objectOf(entry)];
    return objects;
  }
  id operator()(const Value::Dictionary& dictionary) const {
    NSMutableDictionary<NSString*, id>* objects = [NSMutableDictionary dictionary];
    for (const auto& [key, entry] : dictionary) objects[nsString(key)] = objectOf(entry);
    return objects;
  }
};

id objectOf(const Value& value) { return std::visit(ToObject(), value.data); }

Value numberOf(NSNumber* number) {
  if (CFGetTypeID((__bridge CFTypeRef)number) == CFBooleanGetTypeID())
    return Value(static_cast<bool>(number.boolValue));
  const char type = number.objCType[0];
  if (type == 'f' || type == 'd') return Value(number.doubleValue);
  return Value(static_cast<std::int64_t>(number.longLongValue));
}

// None for what the seam has no value for (dates, data).
std::optional<Value> valueOf(id object, int depth) {
  if (depth > kDeepest) return std::nullopt;
  if ([object isKindOfClass:[NSString class]]) return Value(utf8(static_cast<NSString*>(object)));
  if ([object isKindOfClass:[NSNumber class]]) return numberOf(static_cast<NSNumber*>(object));
  if ([object isKindOfClass:[NSArray class]]) {
    Value::List list;
    for (id entry in static_cast<NSArray*>(object))
      if (std::optional<Value> value = valueOf(entry, depth + 1)) list.push_back(std::move(*value));
    return Value(std::move(list));
  }
  if ([object isKindOfClass:[NSDictionary class]]) {
    Value::Dictionary dictionary;
    NSDictionary<NSString*, id>* entries = static_cast<NSDictionary*>(object);
    for (NSString* key in entries)
      if (std::optional<Value> value = valueOf(entries[key], depth + 1))
        dictionary.emplace_back(utf8(key), std::move(*value));
    return Value(std::move(dictionary));
  }
  return std::nullopt;
}

class StandardDefaults final : public UserDefaults {
 public:
  explicit StandardDefaults(MainQueue& queue)
      : texts_(files::join(supportFolder(), "Texts"),
               [this, &queue, alive = std::weak_ptr<char>(alive_)] {
                 queue.post([this, alive] {
                   if (alive.lock()) reportSaved();
                 });
               }) {
    @autoreleasepool {
      NSString* const bundle = NSBundle.mainBundle.bundleIdentifier;
      NSString* const name = bundle != nil ? bundle : NSProcessInfo.processInfo.processName;
      NSDictionary<NSString*, id>* const domain =
          [NSUserDefaults.standardUserDefaults persistentDomainForName:name];
      for (NSString* key in domain) storedValue(utf8(key));
      // Without a word of what refers to them, none is known to be of no use.
      if (domain != nil) texts_.deleteOthers();
    }
  }

  // The system's preferences service takes the value before this returns and writes whole files.
  void set(std::string_view key, Value value) override {
    @autoreleasepool {
      [NSUserDefaults.standardUserDefaults setObject:objectOf(texts_.outlined(key, value))
                                              forKey:nsString(key)];
      texts_.stored(texts_.state());
      reportSaved();
    }
  }

 private:
  std::optional<Value> storedValue(std::string_view key) const override {
    @autoreleasepool {
      const auto stored =
          valueOf([NSUserDefaults.standardUserDefaults objectForKey:nsString(key)], 0);
      return stored ? texts_.restored(key, *stored) : std::nullopt;
    }
  }

  void reportSaved() {
    const bool failed = !texts_.allWritten();
    if (failed && !told_) report("Couldn't save the history: is the disk full?");
    told_ = failed;
  }

  std::shared_ptr<char> alive_ = std::make_shared<char>();
  mutable LargeTexts texts_;  // remembers what it has read
  bool told_ = false;
};

}  // namespace

std::string supportFolder() {
  @autoreleasepool {
    NSString* const all =
        NSSearchPathForDirectoriesInDomains(NSApplicationSupportDirectory, NSUserDomainMask, YES)
            .firstObject;
    return files::join(
        all != nil ? utf8(all) : files::expandingTilde("~/Library/Application Support"),
        "Marbelot");
  }
}

std::unique_ptr<UserDefaults> makeUserDefaults(MainQueue& queue) {
  return std::make_unique<StandardDefaults>(queue);
}

}  // namespace marbelot
