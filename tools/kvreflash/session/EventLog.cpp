#include "EventLog.h"

#include "Streams.h"
#include "UserFiles.h"

bool EventLog::open(const std::string& path) {
    file_ = path == "-" ? stderr : createFile(filePath(path));
    return file_ != nullptr;
}

void EventLog::write(const char* event, std::uint32_t value) {
    if (file_ != nullptr) {
        complete_ = std::fprintf(file_, "{\"event\":\"%s\",\"value\":%u}\n", event, value) > 0 &&
                    std::fflush(file_) == 0 && complete_;
    }
}

bool EventLog::close() {
    if (file_ != nullptr && file_ != stderr) {
        complete_ = std::fclose(file_) == 0 && complete_;
    }
    file_ = nullptr;
    return complete_;
}
