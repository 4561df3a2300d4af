// How implementations of the seam hear of input: a callback on the main thread each
// time a file descriptor can be read. There may be nothing any more: reading must not
// block. Main thread only.
#pragma once

#include <functional>

#include "Platform/Token.h"

namespace Platform {

class FileDescriptorWatcher {
public:
    virtual ~FileDescriptorWatcher() = default;

    virtual Token watch(int fileDescriptor, std::function<void()> readable) = 0;
};

}  // namespace Platform
