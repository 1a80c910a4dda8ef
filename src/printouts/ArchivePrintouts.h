#pragma once

#include "KvCFirmwareArchive.h"

class KvCConsoleWriter;

/// Prints the version of the archive, always with its maintenance component.
void printArchiveVersion(const KvCConsoleWriter& writer, const KvCFirmwareArchive& archive);
/// Prints the table of the entries.
void printArchiveContent(const KvCConsoleWriter& writer, const KvCFirmwareArchive& archive);
/// Prints the description as it was understood, with the checksums completed.
void dumpDescription(const KvCConsoleWriter& writer, const KvCFirmwareArchive& archive);
