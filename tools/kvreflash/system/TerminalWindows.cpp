#include "Terminal.h"

#include <io.h>

bool isTerminal(std::FILE* stream) {
    return _isatty(_fileno(stream)) != 0;
}

bool writesAnyWideText() {
    return false;
}
