#include "Shell.h"

ShellSyntax systemShell() {
    return ShellSyntax::posix;
}
