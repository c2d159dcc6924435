/// Everything a host needs of Zorvane, in one header.
#pragma once

#include "Zorvane/Platform/CoreGraphics/CGGeometry.hpp"
#include "Zorvane/Platform/CoreMedia/CMTime.hpp"
#include "Zorvane/Sources/ZVDisplay.hpp"
#include "Zorvane/ZVAsyncStream.hpp"
#include "Zorvane/ZVBundleInfo.hpp"
#include "Zorvane/ZVColorSpace.hpp"
#include "Zorvane/ZVError.hpp"
#include "Zorvane/ZVLogger.hpp"
#include "Zorvane/ZVMainExecutor.hpp"
#include "Zorvane/ZVMediaInfo.hpp"
#include "Zorvane/ZVOutputOptions.hpp"
#include "Zorvane/ZVPlatform.hpp"
#include "Zorvane/ZVRecorder.hpp"
#include "Zorvane/ZVSchemaItem.hpp"
#include "Zorvane/ZVTime.hpp"
#include "Zorvane/ZVVersion.hpp"
