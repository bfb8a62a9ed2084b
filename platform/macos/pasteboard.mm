// The general pasteboard. It announces nothing; its change count is cheap to ask for.
#import <AppKit/AppKit.h>

#include "platform/concealed_types.h"
#include "platform/files.h"
#include "platform/macos/conversions.h"
#include "platform/macos/services.h"
#include "platform/text.h"

// An image for the pasteboard in all that the system's image object offers, but a PNG as its own
// bytes: what AppKit would write has lost its metadata and colour profile.
@interface MarbelotImageWriter : NSObject <NSPasteboardWriting>
- (instancetype)initWithImage:(const marbelot::Image&)image;
// What the system makes of it; nil when that is nothing.
@property(readonly) NSImage* object;
@end

@implementation MarbelotImageWriter {
  std::optional<marbelot::Image> _image;
  NSImage* _object;  // nil until it is needed
}

- (instancetype)initWithImage:(const marbelot::Image&)image {
  self = [super init];
  if (self != nil) _image = image;
  return self;
}

- (NSData*)data {
  const marbelot::SharedBytes bytes = _image->bytes();
  return bytes ? marbelot::nsData(bytes) : nil;
}

- (NSImage*)object {
  if (_object == nil) {
    NSData* const data = [self data];
    if (data != nil) _object = [[NSImage alloc] initWithData:data];
  }
  return _object;
}

- (NSArray*)writableTypesForPasteboard:(NSPasteboard*)pasteboard {
  NSMutableArray<NSString*>* types = [NSMutableArray array];
  if (_image->format() == marbelot::ImageFormat::png) [types addObject:NSPasteboardTypePNG];
  // To ask the object, pixels would have to be encoded first.
  NSArray* const others = _image->isEncoded() ? [self.object writableTypesForPasteboard:pasteboard]
                                              : @[ NSPasteboardTypeTIFF ];
  for (NSString* type in others)
    if (![types containsObject:type]) [types addObject:type];
  return types;
}

- (bool)isOwnType:(NSString*)type {
  return _image->format() == marbelot::ImageFormat::png &&
         [type isEqualToString:NSPasteboardTypePNG];
}

// Nothing is converted until somebody pastes it.
- (NSPasteboardWritingOptions)writingOptionsForType:(NSString*)type
                                         pasteboard:(NSPasteboard*)pasteboard {
  return [self isOwnType:type] && _image->isEncoded() ? 0 : NSPasteboardWritingPromised;
}

- (id)pasteboardPropertyListForType:(NSString*)type {
  return [self isOwnType:type] ? [self data] : [self.object pasteboardPropertyListForType:type];
}
@end

namespace marbelot {
namespace {

std::optional<Image> imageOfType(NSPasteboard* pasteboard, NSString* type) {
  const SharedBytes bytes = sharedBytes([pasteboard dataForType:type]);
  return bytes ? Image::fromBytes(bytes) : std::nullopt;
}

// What only the system's image object draws, such as the first page of a PDF.
std::optional<Image> drawing(NSData* data) {
  NSImage* const image = data != nil ? [[NSImage alloc] initWithData:data] : nil;
  const SharedBytes tiff = sharedBytes(image.TIFFRepresentation);
  return tiff ? Image::fromBytes(tiff) : std::nullopt;
}

// The first file that was copied in the file manager, when it is an image, a drawing or a document.
std::optional<Image> firstFile(NSPasteboard* pasteboard) {
  NSArray* const urls = [pasteboard readObjectsForClasses:@[ [NSURL class] ]
                                                  options:@{
                                                    NSPasteboardURLReadingFileURLsOnlyKey : @YES
                                                  }];
  NSURL* const url = urls.firstObject;
  const char* const path = url.path.fileSystemRepresentation;
  const auto file = path != nullptr ? files::info(path) : std::nullopt;
  if (!file) return std::nullopt;
  if (std::optional<Image> image = Image::fromFile(path)) return image;
  // Of other kinds nothing is read: a copied film is none of the clipboard's pictures.
  id type = nil;
  [url getResourceValue:&type forKey:NSURLTypeIdentifierKey error:nil];
  constexpr std::size_t largestDrawing = std::size_t{64} << 20;
  if (type == nil || ![NSImage.imageTypes containsObject:type] || file->bytes > largestDrawing)
    return std::nullopt;
  return drawing([NSData dataWithContentsOfFile:url.path]);
}

// PNG first, as it is what came; TIFF before the rest, because owners convert the others from it.
std::optional<Image> readImage(NSPasteboard* pasteboard, bool holdsText) {
  for (NSString* type in @[
         NSPasteboardTypePNG, NSPasteboardTypeTIFF, @"public.jpeg", @"com.compuserve.gif",
         @"public.heic", @"com.microsoft.bmp", @"org.webmproject.webp"
       ]) {
    if ([pasteboard availableTypeFromArray:@[ type ]] == nil) continue;
    if (std::optional<Image> image = imageOfType(pasteboard, type)) return image;
  }
  if (std::optional<Image> image = firstFile(pasteboard)) return image;
  if (holdsText) return std::nullopt;
  NSString* const document = [pasteboard availableTypeFromArray:@[ NSPasteboardTypePDF ]];
  return document != nil ? drawing([pasteboard dataForType:document]) : std::nullopt;
}

SharedText readText(NSPasteboard* pasteboard) {
  NSData* const data = [pasteboard dataForType:NSPasteboardTypeString];
  if (data != nil)
    return share(text::sanitized({static_cast<const char*>(data.bytes), data.length}));
  // Of another encoding, which the system converts.
  NSString* const string = [pasteboard stringForType:NSPasteboardTypeString];
  return string != nil ? share(utf8(string)) : nullptr;
}

PasteboardContents readContents(NSPasteboard* pasteboard) {
  PasteboardContents contents;
  for (NSString* type in pasteboard.types) {
    contents.types.push_back(utf8(type));
    if (isConcealedType(contents.types.back())) contents.concealed = true;
  }
  contents.text = readText(pasteboard);
  contents.image = readImage(pasteboard, contents.text != nullptr);
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
      // The type is UTF-8: what is large need not be converted and back.
      if (![pasteboard_ setData:nsData(text) forType:NSPasteboardTypeString]) return std::nullopt;
      if (concealed) markConcealed();
      return note(count,
                  {.text = std::move(text), .image = {}, .types = {}, .concealed = concealed});
    }
  }

  std::optional<std::int64_t> write(const Image& image, bool concealed) override {
    @autoreleasepool {
      MarbelotImageWriter* const writer = [[MarbelotImageWriter alloc] initWithImage:image];
      if (image.isEncoded()) {
        if (writer.object == nil) return std::nullopt;  // better the old contents than none
      } else {
        // Whoever pastes will not wait for long then.
        const Image pixels = image;
        dispatch_async(dispatch_get_global_queue(QOS_CLASS_USER_INITIATED, 0), ^{
          pixels.bytes();
        });
      }
      const std::int64_t count = [pasteboard_ clearContents];
      if (![pasteboard_ writeObjects:@[ writer ]]) return std::nullopt;
      if (concealed) markConcealed();
      return note(count, {.text = nullptr, .image = image, .types = {}, .concealed = concealed});
    }
  }

  bool announcesChanges() const override { return false; }
  void setChangeHandler(std::function<void()>) override {}

 private:
  void markConcealed() { [pasteboard_ setString:@"" forType:@"org.nspasteboard.ConcealedType"]; }

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
