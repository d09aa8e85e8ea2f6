// GNUstep's headers ask for this one of a runtime that Debian does not have; its declarations are the block runtime's.
#pragma once

#include <Block.h>
