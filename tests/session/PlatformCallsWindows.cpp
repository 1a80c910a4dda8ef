#include "FailingMemory.h"

bool isCalledByPlatform() {
    return false; // a library of its own has an operator new of its own here
}
