// The general pasteboard. It announces nothing; its change count is cheap to ask for.
#import <AppKit/AppKit.h>

#include "platform/concealed_types.h"
#include "platform/macos/conversions.h"
#include "platform/macos/services.h"

// An image for the pasteboard in all that the system's image object offers, but a PNG as its own
// bytes: what AppKit would write has lost its metadata and colour profile.
@interface MarbelotImageWriter : NSObject <NSPasteboardWriting>
- (instancetype)initWithImage:(NSImage*)image png:(NSData*)png;
@end

@implementation MarbelotImageWriter {
  NSImage* _image;
  NSData* _png;  // nil when the image is not a PNG
}

- (instancetype)initWithImage:(NSImage*)image png:(NSData*)png {
  self = [super init];
  if (self != nil) {
    _image = image;
    _png = png;
  }
  return self;
}

- (NSArray*)writableTypesForPasteboard:(NSPasteboard*)pasteboard {
  NSMutableArray<NSString*>* types = [NSMutableArray array];
  if (_png != nil) [types addObject:NSPasteboardTypePNG];
  for (NSString* type in [_image writableTypesForPasteboard:pasteboard])
    if (![types containsObject:type]) [types addObject:type];
  return types;
}

// Nothing is converted until somebody pastes it.
- (NSPasteboardWritingOptions)writingOptionsForType:(NSString*)type
                                         pasteboard:(NSPasteboard*)pasteboard {
  const bool ready = _png != nil && [type isEqualToString:NSPasteboardTypePNG];
  return ready ? 0 : NSPasteboardWritingPromised;
}

- (id)pasteboardPropertyListForType:(NSString*)type {
  if (_png != nil && [type isEqualToString:NSPasteboardTypePNG]) return _png;
  return [_image pasteboardPropertyListForType:type];
}
@end

namespace marbelot {
namespace {

std::optional<Image> imageOfType(NSPasteboard* pasteboard, NSString* type) {
  const SharedBytes bytes = sharedBytes([pasteboard dataForType:type]);
  return bytes ? Image::fromBytes(bytes) : std::nullopt;
}

// PNG first, as it is what came; TIFF before the rest, because owners convert the others from it.
std::optional<Image> readImage(NSPasteboard* pasteboard) {
  NSString* const exact =
      [pasteboard availableTypeFromArray:@[ NSPasteboardTypePNG, NSPasteboardTypeTIFF ]];
  if (exact != nil) {
    if (std::optional<Image> image = imageOfType(pasteboard, exact)) return image;
  }
  NSString* const other = [pasteboard availableTypeFromArray:NSImage.imageTypes];
  if (other == nil) return std::nullopt;
  if (std::optional<Image> image = imageOfType(pasteboard, other)) return image;
  // Formats that only the system's image object knows, such as PDF.
  NSData* const data = [pasteboard dataForType:other];
  NSImage* const image = data != nil ? [[NSImage alloc] initWithData:data] : nil;
  const SharedBytes tiff = sharedBytes(image.TIFFRepresentation);
  return tiff ? Image::fromBytes(tiff) : std::nullopt;
}

PasteboardContents readContents(NSPasteboard* pasteboard) {
  PasteboardContents contents;
  for (NSString* type in pasteboard.types) {
    contents.types.push_back(utf8(type));
    if (isConcealedType(contents.types.back())) contents.concealed = true;
  }
  NSString* const string = [pasteboard stringForType:NSPasteboardTypeString];
  if (string != nil) contents.text = share(utf8(string));
  contents.image = readImage(pasteboard);
  return contents;
}

class GeneralPasteboard final : public Pasteboard {
 public:
  std::int64_t changeCount() override { return pasteboard_.changeCount; }

  PasteboardContents contents() override { return present().contents; }

  std::vector<PasteboardChange> changesSince(std::int64_t count) override {
    std::erase_if(own_, [count](const PasteboardChange& change) { return change.count <= count; });
    std::vector<PasteboardChange> changes = std::exchange(own_, {});
    if (changeCount() == count) return changes;
    const std::int64_t told = changes.empty() ? count : changes.back().count;
    if (present().count > told) changes.push_back(present_);
    return changes;
  }

  using Pasteboard::write;

  std::optional<std::int64_t> write(SharedText text, bool concealed) override {
    @autoreleasepool {
      // The count of this very write: another program's may follow at any moment.
      const std::int64_t count = [pasteboard_ clearContents];
      if (![pasteboard_ setString:nsString(*text) forType:NSPasteboardTypeString])
        return std::nullopt;
      if (concealed) [pasteboard_ setString:@"" forType:@"org.nspasteboard.ConcealedType"];
      return note(count,
                  {.text = std::move(text), .image = {}, .types = {}, .concealed = concealed});
    }
  }

  std::optional<std::int64_t> write(const Image& image) override {
    @autoreleasepool {
      const SharedBytes bytes = image.bytes();
      NSData* const data = bytes ? nsData(bytes) : nil;
      NSImage* const object = data != nil ? [[NSImage alloc] initWithData:data] : nil;
      if (object == nil) return std::nullopt;  // better the old contents than none
      const std::int64_t count = [pasteboard_ clearContents];
      NSData* const png = image.format() == ImageFormat::png ? data : nil;
      MarbelotImageWriter* const writer = [[MarbelotImageWriter alloc] initWithImage:object
                                                                                 png:png];
      if (![pasteboard_ writeObjects:@[ writer ]]) return std::nullopt;
      return note(count, {.text = nullptr, .image = image, .types = {}, .concealed = false});
    }
  }

  bool announcesChanges() const override { return false; }
  void setChangeHandler(std::function<void()>) override {}

 private:
  // Own writes are known without being read; one may be gone before anybody asks.
  std::int64_t note(std::int64_t count, PasteboardContents contents) {
    for (NSString* type in pasteboard_.types) contents.types.push_back(utf8(type));
    present_ = {count, std::move(contents)};
    own_.push_back(present_);
    return count;
  }

  // Read once for each change. A change that falls into the reading makes it start again, so that
  // text and image belong together; an owner that never rests is taken as it is.
  const PasteboardChange& present() {
    for (int tries = 0; tries < 3 && present_.count != changeCount(); ++tries) {
      @autoreleasepool {
        present_.count = changeCount();
        present_.contents = readContents(pasteboard_);
      }
    }
    return present_;
  }

  NSPasteboard* const pasteboard_ = NSPasteboard.generalPasteboard;
  PasteboardChange present_ = {-1, {}};
  std::vector<PasteboardChange> own_;  // writes that have not been told
};

}  // namespace

std::unique_ptr<Pasteboard> makePasteboard() { return std::make_unique<GeneralPasteboard>(); }

}  // namespace marbelot
