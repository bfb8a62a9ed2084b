// What the macOS sources use of WebKit. Declarations only, by the documented API.
#pragma once
#import <AppKit/AppKit.h>

@interface WKNavigation : NSObject
@end

@interface WKWebsiteDataStore : NSObject
+ (WKWebsiteDataStore *)nonPersistentDataStore;
@end

@interface WKWebViewConfiguration : NSObject
@property(strong) WKWebsiteDataStore *websiteDataStore;
@end

@interface WKWebView : NSView
- (instancetype)initWithFrame:(NSRect)frame configuration:(WKWebViewConfiguration *)configuration;
- (WKNavigation *)loadRequest:(NSURLRequest *)request;
@end
