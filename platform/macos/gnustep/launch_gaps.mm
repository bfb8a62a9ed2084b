// What GNUstep lacks of macOS to hand things to other programs. There is nobody here who
// would know of applications or run scripts, so that there are none.
#import <AppKit/AppKit.h>

NSString* const NSAppleScriptErrorMessage = @"NSAppleScriptErrorMessage";

@implementation NSAppleScript (LaunchGaps)
- (instancetype)initWithSource:(NSString*)source {
  return [self init];
}
- (id)executeAndReturnError:(NSDictionary**)error {
  if (error != nullptr) *error = @{NSAppleScriptErrorMessage : @"there are no scripts here"};
  return nil;
}
@end

@implementation NSApplication (LaunchGaps)
- (void)yieldActivationToApplication:(NSRunningApplication*)application {
}
@end

@implementation NSRunningApplication (LaunchGaps)
- (BOOL)activateFromApplication:(NSRunningApplication*)application
                        options:(NSApplicationActivationOptions)options {
  return [self activateWithOptions:options];
}
@end

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
