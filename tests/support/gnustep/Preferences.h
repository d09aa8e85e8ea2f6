#pragma once

#import <Foundation/Foundation.h>

// As at the end of a process: what was not stored is gone.
void forgetUnstoredPreferences(void);
