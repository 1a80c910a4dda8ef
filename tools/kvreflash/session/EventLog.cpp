#include "EventLog.h"

#include "Streams.h"
#include "ToolOutput.h"
#include "UserFiles.h"

bool EventLog::open(const std::string& path) {
    file_ = path == "-" ? stderr : createFile(filePath(path));
    return file_ != nullptr;
}

void EventLog::write(const char* event, std::uint32_t value) {
    if (file_ == nullptr) {
        return;
    }
    std::string line(R"({"event":")");
    line.append(event).append(R"(","value":)").append(std::to_string(value)).append("}\n");
    const bool isWritten =
        file_ == stderr ? writeToErrors(line) : std::fputs(line.c_str(), file_) >= 0 && std::fflush(file_) == 0;
    complete_ = isWritten && complete_;
}

bool EventLog::close() {
    if (file_ != nullptr && file_ != stderr) {
        complete_ = std::fclose(file_) == 0 && complete_;
    }
    file_ = nullptr;
    return complete_;
}
