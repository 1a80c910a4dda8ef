#pragma once

#include <cstdio>
#include <memory>

struct StreamCloser {
    void operator()(std::FILE* stream) const { static_cast<void>(std::fclose(stream)); }
};

/// Closes a stream at the end of its scope.
using StreamGuard = std::unique_ptr<std::FILE, StreamCloser>;
