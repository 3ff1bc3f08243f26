// What the program takes from a Mac's own headers, for checks against older ones: declared as far
// as it is used.

#ifdef __OBJC__
#import <ScreenCaptureKit/ScreenCaptureKit.h>

NS_ASSUME_NONNULL_BEGIN

API_AVAILABLE(macos(12.3))
@interface SCDisplay : NSObject
@property(readonly) CGDirectDisplayID displayID;
@property(readonly) NSInteger width;   // points
@property(readonly) NSInteger height;  // points
@end

@interface SCShareableContent (Displays)
@property(readonly) NSArray<SCDisplay *> *displays;
@end

@interface SCContentFilter (Displays)
- (instancetype)initWithDisplay:(SCDisplay *)display
               excludingWindows:(NSArray<SCWindow *> *)excluded;
@end

NS_ASSUME_NONNULL_END
#endif
