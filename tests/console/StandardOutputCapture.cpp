#include "StandardOutputCapture.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <unistd.h>

StandardOutputCapture::StandardOutputCapture() : formerDescriptor_(dup(fileno(stdout))) {
    std::fflush(stdout);
    std::FILE* const file = std::fopen((folder_.path() / "output").string().c_str(), "wb");
    if (file == nullptr || dup2(fileno(file), fileno(stdout)) < 0) {
        ADD_FAILURE() << "standard output cannot be led into a file";
    }
    if (file != nullptr) {
        std::fclose(file);
    }
}

StandardOutputCapture::~StandardOutputCapture() {
    std::fflush(stdout);
    dup2(formerDescriptor_, fileno(stdout));
    close(formerDescriptor_);
}
