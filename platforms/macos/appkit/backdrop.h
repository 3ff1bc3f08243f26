#pragma once

#import <AppKit/AppKit.h>

// The translucent material that strips stand on, blended with what lies behind the panel, whether
// or not the application is active.
@interface PellowBackdrop : NSVisualEffectView

// Of its corners, in points of the panel.
@property(nonatomic) double maskRadius;

@end
