#pragma once

#import <Foundation/Foundation.h>

// What the program uses of Sparkle, which is loaded beside it at run time and found by name: a
// build needs none of it. The names of the members are Sparkle's.

@protocol PellowSparkleItem
@property(nonatomic, readonly, copy) NSString* displayVersionString;
@end

@protocol PellowSparkleUpdater
@property(nonatomic) BOOL automaticallyChecksForUpdates;
@property(nonatomic, readonly, copy) NSDate* lastUpdateCheckDate;
- (void)checkForUpdates;
@end

@protocol PellowSparkleController <NSObject>
- (instancetype)initWithStartingUpdater:(BOOL)startUpdater
                        updaterDelegate:(id)updaterDelegate
                     userDriverDelegate:(id)userDriverDelegate;
@property(nonatomic, readonly) id<PellowSparkleUpdater> updater;
@end

// What Sparkle may ask of its delegates.
@protocol PellowSparkleDelegate
@property(nonatomic, readonly) BOOL supportsGentleScheduledUpdateReminders;
- (BOOL)standardUserDriverShouldHandleShowingScheduledUpdate:(id<PellowSparkleItem>)update
                                         andInImmediateFocus:(BOOL)immediateFocus;
- (void)standardUserDriverWillHandleShowingUpdate:(BOOL)handleShowingUpdate
                                        forUpdate:(id<PellowSparkleItem>)update
                                            state:(id)state;
- (void)standardUserDriverDidReceiveUserAttentionForUpdate:(id<PellowSparkleItem>)update;
- (void)standardUserDriverWillShowModalAlert;
- (void)standardUserDriverWillFinishUpdateSession;
- (void)updaterWillRelaunchApplication:(id<PellowSparkleUpdater>)updater;
@end
