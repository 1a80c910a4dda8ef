#pragma once

#include <memory>
#include <string>
#include <vector>

/// Another process, to which a test talks line by line. It is killed, if it still runs, at the end.
class ChildProcess {
public:
    /// Starts `program` with `arguments`; a test failure when that does not work.
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess(ChildProcess&&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ChildProcess& operator=(ChildProcess&&) = delete;
    ~ChildProcess();

    /// Writes a line to its standard input and returns the next line of its standard output.
    std::string ask(const std::string& line);
    /// Ends its standard input and waits for its end; its exit code.
    int finish();
    /// Ends it at once, without a chance to clean up.
    void kill();

private:
    struct Impl;

    /// False when not all of `text` could be written.
    bool send(const std::string& text);
    /// The bytes that have arrived, at least one; empty at the end.
    std::string receive();

    std::unique_ptr<Impl> impl_;
    std::string pending_;
};
