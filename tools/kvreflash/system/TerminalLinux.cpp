#include "Terminal.h"

#include <unistd.h>

bool isTerminal(std::FILE* stream) {
    return isatty(fileno(stream)) != 0;
}

bool writesAnyWideText() {
    return true;
}
