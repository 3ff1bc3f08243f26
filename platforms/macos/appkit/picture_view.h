#pragma once

#import <AppKit/AppKit.h>

// A picture that fills a panel, as in flights: the window server scales it at every step of an
// animation, and nothing is drawn again.
@interface PellowPictureView : NSView

@property(nonatomic) NSImage* image;
// Of the view's corners, in points.
@property(nonatomic) double maskRadius;
// Points; how large the picture is at most.
@property(nonatomic) NSSize largestSize;

@end
