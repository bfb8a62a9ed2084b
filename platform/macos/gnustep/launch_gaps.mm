// What GNUstep lacks of macOS to open links with. There is nobody here who would know of
// applications, so that there are none.
#import <AppKit/AppKit.h>

@implementation NSWorkspaceOpenConfiguration
+ (instancetype)configuration {
  return [[self alloc] init];
}
@end

@implementation NSWorkspace (LaunchGaps)
- (NSURL*)URLForApplicationToOpenURL:(NSURL*)url {
  return nil;
}
- (NSArray*)URLsForApplicationsToOpenURL:(NSURL*)url {
  return @[];
}
- (void)openURLs:(NSArray*)urls
    withApplicationAtURL:(NSURL*)application
           configuration:(NSWorkspaceOpenConfiguration*)configuration
       completionHandler:(void (^)(NSRunningApplication*, NSError*))handler {
}
@end
