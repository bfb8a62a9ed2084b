// Images, and the pasteboard as macOS has it.
#import <AppKit/AppKit.h>

#import "platform/macos/gnustep/gaps.h"

// --- Images and the pasteboard ---------------------------------------------------------------

@implementation NSImage (MarbelotGaps)
+ (NSArray*)imageTypes {
  return @[ NSPasteboardTypePNG, NSPasteboardTypeTIFF, @"public.jpeg" ];
}
// The symbols are the system's own: every name gives the same frame.
+ (instancetype)imageWithSystemSymbolName:(NSString*)name
                 accessibilityDescription:(NSString*)description {
  constexpr CGFloat side = 16, inset = 2.5, radius = 3;
  NSImage* const image = [[NSImage alloc] initWithSize:NSMakeSize(side, side)];
  [image lockFocus];
  [NSColor.blackColor setStroke];
  [[NSBezierPath bezierPathWithRoundedRect:NSInsetRect(NSMakeRect(0, 0, side, side), inset, inset)
                                   xRadius:radius
                                   yRadius:radius] stroke];
  [image unlockFocus];
  image.name = name;
  return image;
}
- (NSArray*)writableTypesForPasteboard:(NSPasteboard*)pasteboard {
  return @[ NSPasteboardTypeTIFF ];
}
- (id)pasteboardPropertyListForType:(NSString*)type {
  return [type isEqualToString:NSPasteboardTypeTIFF] ? self.TIFFRepresentation : nil;
}
@end

// Gives what was promised when somebody pastes it.
@interface GapPromise : NSObject
@property(strong) NSArray<id<NSPasteboardWriting>>* objects;
@end

@implementation GapPromise
- (void)pasteboard:(NSPasteboard*)pasteboard provideDataForType:(NSString*)type {
  for (id<NSPasteboardWriting> object in self.objects) {
    id const data = [object pasteboardPropertyListForType:type];
    if (data != nil) {
      [pasteboard setData:data forType:type];
      return;
    }
  }
}
@end

NSString* const NSPasteboardURLReadingFileURLsOnlyKey = @"NSPasteboardURLReadingFileURLsOnlyKey";

@implementation NSPasteboard (MarbelotGaps)
// Files only, and only the first.
- (NSArray*)readObjectsForClasses:(NSArray<Class>*)classes options:(NSDictionary*)options {
  NSURL* const url = [NSURL URLFromPasteboard:self];
  return url.isFileURL ? @[ url ] : @[];
}
- (NSInteger)clearContents {
  return [self declareTypes:@[] owner:nil];
}
@end

namespace {

bool isPromised(id<NSPasteboardWriting> object, NSString* type, NSPasteboard* pasteboard) {
  return [object respondsToSelector:@selector(writingOptionsForType:pasteboard:)] &&
         [object writingOptionsForType:type pasteboard:pasteboard] == NSPasteboardWritingPromised;
}

BOOL writeObjects(NSPasteboard* self, SEL, NSArray<id<NSPasteboardWriting>>* objects) {
  static GapPromise* promise;  // the pasteboard does not keep its owner
  promise = [[GapPromise alloc] init];
  promise.objects = objects;
  for (id<NSPasteboardWriting> object in objects) {
    NSArray<NSString*>* const types = [object writableTypesForPasteboard:self];
    [self addTypes:types owner:promise];
    for (NSString* type in types)
      if (!isPromised(object, type, self))
        [self setData:[object pasteboardPropertyListForType:type] forType:type];
  }
  return YES;
}

// On macOS nothing need be declared before it is set.
BOOL (*setDeclaredString)(id, SEL, NSString*, NSString*);
BOOL setString(NSPasteboard* self, SEL name, NSString* string, NSString* type) {
  if ([type isEqualToString:NSPasteboardTypeString])
    return [self setData:[string dataUsingEncoding:NSUTF8StringEncoding] forType:type];
  if (![self.types containsObject:type]) [self addTypes:@[ type ] owner:nil];
  return setDeclaredString(self, name, string, type);
}

// GNUstep keeps strings as property lists, macOS as UTF-8.
BOOL (*setRawData)(id, SEL, NSData*, NSString*);
BOOL setData(NSPasteboard* self, SEL name, NSData* data, NSString* type) {
  if (![type isEqualToString:NSPasteboardTypeString]) return setRawData(self, name, data, type);
  NSString* const string = [[NSString alloc] initWithData:data encoding:NSUTF8StringEncoding];
  if (![self.types containsObject:type]) [self addTypes:@[ type ] owner:nil];
  NSData* const list = [NSSerializer serializePropertyList:string];
  return setRawData(self, name, list, type);
}

NSData* (*rawData)(id, SEL, NSString*);
NSData* data(NSPasteboard* self, SEL name, NSString* type) {
  NSData* const found = rawData(self, name, type);
  if (found == nil || ![type isEqualToString:NSPasteboardTypeString]) return found;
  id const string = [NSDeserializer deserializePropertyListFromData:found mutableContainers:NO];
  return [string isKindOfClass:[NSString class]] ? [string dataUsingEncoding:NSUTF8StringEncoding]
                                                 : nil;
}

// What the pasteboard's server names are proxies, which fast enumeration cannot walk.
NSArray* (*remoteTypes)(id, SEL);
NSArray* localTypes(id self, SEL name) {
  NSArray* const remote = remoteTypes(self, name);
  NSMutableArray<NSString*>* const local = [NSMutableArray array];
  for (NSUInteger i = 0, count = remote.count; i < count; ++i)
    [local addObject:@([[remote objectAtIndex:i] UTF8String])];
  return local;
}

}  // namespace

// --- The methods that GNUstep has, but otherwise ---------------------------------------------

@interface PasteboardReplacements : NSObject
@end

@implementation PasteboardReplacements
+ (void)load {
  replace([NSPasteboard class], @selector(writeObjects:), writeObjects);
  setRawData = replace([NSPasteboard class], @selector(setData:forType:),
                       (BOOL(*)(id, SEL, NSData*, NSString*))setData);
  rawData = replace([NSPasteboard class], @selector(dataForType:),
                    (NSData * (*)(id, SEL, NSString*)) data);
  setDeclaredString = replace([NSPasteboard class], @selector(setString:forType:),
                              (BOOL(*)(id, SEL, NSString*, NSString*))setString);
  remoteTypes = replace([NSPasteboard class], @selector(types), localTypes);
}
@end
