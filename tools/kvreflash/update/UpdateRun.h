#pragma once

#include "KvRuns.h"
#include "SessionResult.h"
#include "ToolSession.h"
#include "UpdateOptions.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// An update that is to be made.
struct UpdateTask {
    SessionRequest request;
    const UpdateSteps& steps;
    const ReportOption& report;
    const JsonOption& json;
    /// The saved plan that decides what is done, if one does.
    std::optional<KvNReflasher::KvTSavedPlan> plan;
    /// The run that it goes on with, if it does.
    std::optional<KvNReflasher::KvTRunRecord> resumed;
    /// Elements of that run that are in doubt are updated again.
    bool redoesDoubtful = false;
    /// Why it cannot be made.
    KvNReflasher::KvTVerdict fault{};
};

/// The one session of an update, from its preparation to its report.
class UpdateRun {
public:
    /// `task` must outlive the session.
    explicit UpdateRun(const UpdateTask& task);

    [[nodiscard]] ExitCode updateAndReport();

private:
    [[nodiscard]] bool opensFiles();
    [[nodiscard]] std::string planId() const;
    [[nodiscard]] bool prepares();
    [[nodiscard]] bool passesCheck();
    [[nodiscard]] bool mayRun();
    [[nodiscard]] KvNReflasher::KvTVerdict choose();
    [[nodiscard]] KvNReflasher::KvTVerdict holdToPlan();
    [[nodiscard]] KvNReflasher::KvTVerdict goOnWithRun();
    void sayDifferences(const char* what, const std::vector<std::string>& differences);
    [[nodiscard]] bool goesOn(const char* what);
    [[nodiscard]] bool passesPreflight();
    void updateAndReboot();
    void judgeDoubt();
    void lookAgain();
    [[nodiscard]] KvNReflasher::KvTVerification look(bool wasRebooted);
    [[nodiscard]] KvNReflasher::KvTVerification lookAfterReboot();

    const UpdateTask& task_;
    ToolSession session_;
    SessionResult result_{"update", session_};
    /// run() and what follows it went well.
    bool succeeded_ = false;
    /// Elements of the earlier run that are in doubt and were left out.
    std::size_t doubtfulCount_ = 0;
};
