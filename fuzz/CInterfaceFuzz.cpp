// The interface in C: its functions in any order, with handles, records and texts of any kind.

#include "FuzzFolder.h"
#include "FuzzInput.h"
#include "KvEmulation.h"
#include "Property.h"
#include "ServiceState.h"
#include "kvreflash.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

/// A small target, its archive and a journal, made anew for each input.
class Box {
public:
    Box() {
        KvEmulation::reset();
        folder_.write("archive.json", description);
        folder_.write("node.kfw", "firmware");
        std::filesystem::create_directory(folder_.text("rack"));
        require(std::filesystem::copy_file(KV_BOX_TARGET, folder_.text("rack") + "/target.json"),
                "The target can be copied.");
        require(KvEmulation::serve(folder_.text("rack")).served, "The target is served.");
    }
    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;
    ~Box() {
        requireNothingHeld();
        KvEmulation::reset();
    }

    [[nodiscard]] const FuzzFolder& folder() const { return folder_; }

private:
    static constexpr const char* description =
        R"({"info": {"formatVersion": "1.0", "archiveVersion": "1.0", "productName": "P", "archiveName": "A"},)"
        R"( "files": [{"name": "node.kfw", "sequence": 1, "version": "9.9", "checksumCrc32": 1, "boardType": "QB4120",)"
        R"( "id": 1}, {"name": "node.kfw", "sequence": 2, "boardType": "QB4120", "targetPath": "a.cfg"}]})";

    FuzzFolder folder_;
};

/// A client that does what the input says.
class Client {
public:
    Client(FuzzInput& input, const FuzzFolder& folder) : input_(input), folder_(folder) {}
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() {
        for (void* const handle : handles_) {
            // Each is of one kind, or was freed.
            static_cast<void>(kvr_session_free(static_cast<kvr_session*>(handle)));
            static_cast<void>(kvr_archive_free(static_cast<kvr_archive*>(handle)));
            static_cast<void>(kvr_runs_free(static_cast<kvr_runs*>(handle)));
        }
    }

    void callAny();

private:
    /// A handle that was given out, of whatever kind, freed or not; or something else.
    template <typename Handle>
    Handle* takeHandle() {
        const std::uint8_t which = input_.takeByte();
        if (which < handles_.size()) {
            return static_cast<Handle*>(handles_[which]);
        }
        if (which % 2 == 0) {
            return nullptr;
        }
        // NOLINTNEXTLINE(performance-no-int-to-ptr): a handle is a number
        return reinterpret_cast<Handle*>(static_cast<std::uintptr_t>(which) << 20U);
    }
    template <typename Handle>
    void keep(Handle* handle) {
        constexpr std::size_t most = 12;
        if (handle != nullptr && handles_.size() < most) {
            handles_.push_back(handle);
        } else if (handle != nullptr) {
            release(handle);
        }
    }
    static void release(kvr_session* handle) { static_cast<void>(kvr_session_free(handle)); }
    static void release(kvr_archive* handle) { static_cast<void>(kvr_archive_free(handle)); }
    static void release(kvr_runs* handle) { static_cast<void>(kvr_runs_free(handle)); }

    /// A text that lasts as long as the client; may be null.
    const char* takeText() {
        const std::uint8_t kind = input_.takeByte();
        switch (kind % 5) {
        case 0:
            return nullptr;
        case 1:
            return kept(folder_.text());
        case 2:
            return "127.0.0.1";
        case 3:
            return kept(folder_.text("journal"));
        default:
            return kept(std::string(input_.takeText()));
        }
    }
    const char* kept(std::string text) {
        texts_.push_back(std::make_unique<std::string>(std::move(text)));
        return texts_.back()->c_str();
    }
    std::uint32_t takeSize(std::size_t size) {
        const std::uint8_t kind = input_.takeByte();
        return kind % 4 == 0 ? input_.takeByte() : static_cast<std::uint32_t>(size);
    }
    /// Calls a query with a record that has any size, and bytes behind it that must stay.
    template <typename Record, typename Query>
    std::int32_t ask(Query query) {
        struct Guarded {
            Record record{};
            std::array<unsigned char, 16> behind{};
        } guarded;
        guarded.record.size = takeSize(sizeof(Record));
        guarded.behind.fill(0x5A);
        const std::int32_t result = query(input_.takeByte() % 16 == 0 ? nullptr : &guarded.record);
        for (const unsigned char byte : guarded.behind) {
            require(byte == 0x5A, "Nothing behind a record is written.");
        }
        return result;
    }

    std::int32_t call(std::uint8_t number);
    std::int32_t callArchive(std::uint8_t number);
    std::int32_t createSession();
    std::int32_t createArchive();

    FuzzInput& input_;
    const FuzzFolder& folder_;
    std::vector<void*> handles_;
    std::vector<std::unique_ptr<std::string>> texts_;
};

std::int32_t Client::createSession() {
    kvr_session_options options{};
    options.mode = input_.takeByte() % 10;
    options.flags = input_.takeNumber();
    options.unlisted_files = input_.takeByte() % 4;
    options.stall_limit = 1;
    options.target = takeText();
    options.archive = takeText();
    options.description = takeText();
    options.board_types = takeText();
    options.journal_folder = takeText();
    options.trust_folder = takeText();
    options.saved_plan = input_.takeByte() % 8 == 0 ? takeText() : nullptr;
    options.resumed_run = input_.takeByte() % 8 == 0 ? takeText() : nullptr;
    options.size = takeSize(sizeof(options));
    kvr_session* session = nullptr;
    const std::int32_t result = kvr_session_create(&options, &session);
    require((result == KVR_SUCCESS) == (session != nullptr), "A handle is given exactly if the result is 0.");
    keep(session);
    if (session != nullptr && input_.takeByte() % 2 == 0) {
        const auto ask = [](const kvr_event* event, void* context) {
            kvr_outcome outcome{};
            outcome.size = sizeof(outcome);
            static_cast<void>(kvr_session_get_outcome(static_cast<kvr_session*>(context), &outcome));
            require(kvr_session_free(static_cast<kvr_session*>(context)) == KVR_ERROR_ORDER,
                    "A callback cannot free its session.");
            require(event->size >= sizeof(kvr_event) && event->text != nullptr, "An event is complete.");
        };
        static_cast<void>(kvr_session_set_event_function(session, ask, session));
    }
    return result;
}

std::int32_t Client::createArchive() {
    kvr_archive_options options{};
    options.flags = input_.takeNumber();
    options.archive = takeText();
    options.description = takeText();
    options.trust_folder = takeText();
    options.size = takeSize(sizeof(options));
    kvr_archive* archive = nullptr;
    const std::int32_t result = kvr_archive_create(&options, &archive);
    keep(archive);
    return result;
}

std::int32_t Client::call(std::uint8_t number) {
    auto* const session = takeHandle<kvr_session>();
    const std::uint32_t index = input_.takeByte();
    std::uint32_t value = 0;
    const char* text = nullptr;
    switch (number) {
    case 0:
        return createSession();
    case 1:
        return kvr_session_free(session);
    case 2:
        return kvr_prepare(session);
    case 3:
        return kvr_disable(session, takeText(), &value);
    case 4:
        return kvr_preflight(session);
    case 5:
        return kvr_run(session);
    case 6:
        return kvr_request_stop(session, index);
    case 7:
        return kvr_verify(session, index);
    case 8:
        return kvr_reboot(session);
    case 9:
        return ask<kvr_plan>([&](kvr_plan* record) { return kvr_session_get_plan(session, record); });
    case 10:
        return ask<kvr_element>([&](kvr_element* record) { return kvr_session_get_element(session, index, record); });
    case 11:
        return ask<kvr_entry>([&](kvr_entry* record) { return kvr_session_get_entry(session, index, record); });
    case 12:
        return ask<kvr_outcome>([&](kvr_outcome* record) { return kvr_session_get_outcome(session, record); });
    case 13:
        return ask<kvr_element_result>(
            [&](kvr_element_result* record) { return kvr_session_get_result(session, index, record); });
    case 14:
        return ask<kvr_verification>(
            [&](kvr_verification* record) { return kvr_session_get_verification(session, record); });
    case 15:
        return ask<kvr_verified_element>(
            [&](kvr_verified_element* record) { return kvr_session_get_verified(session, index, record); });
    case 16:
        return ask<kvr_error>([&](kvr_error* record) { return kvr_session_get_error(session, index, record); });
    case 17:
        return ask<kvr_error>(
            [&](kvr_error* record) { return kvr_session_get_element_error(session, index, 0, record); });
    case 18:
        return kvr_session_get_document(session, index % 9, index % 16 == 0 ? nullptr : &text);
    case 19:
        return kvr_session_get_fault(session, index, &text);
    case 20:
        return kvr_session_get_reason(session, index, 0, &value);
    case 21:
        return kvr_session_get_node(session, index, &value);
    default:
        return callArchive(number);
    }
}

std::int32_t Client::callArchive(std::uint8_t number) {
    auto* const archive = takeHandle<kvr_archive>();
    auto* const runs = takeHandle<kvr_runs>();
    const std::uint32_t index = input_.takeByte();
    std::uint32_t value = 0;
    const char* text = nullptr;
    switch (number) {
    case 22:
        return createArchive();
    case 23:
        return kvr_archive_free(archive);
    case 24:
        return kvr_archive_read(archive);
    case 25:
        return ask<kvr_archive_info>([&](kvr_archive_info* record) { return kvr_archive_get_info(archive, record); });
    case 26:
        return ask<kvr_entry>([&](kvr_entry* record) { return kvr_archive_get_entry(archive, index, record); });
    case 27:
        return kvr_archive_check(archive, &value);
    case 28:
        return ask<kvr_finding>([&](kvr_finding* record) { return kvr_archive_get_finding(archive, index, record); });
    case 29:
        return kvr_archive_compare(archive, takeHandle<kvr_archive>(), &value);
    case 30:
        return ask<kvr_change>([&](kvr_change* record) { return kvr_archive_get_change(archive, index, record); });
    case 31:
        return kvr_archive_get_document(archive, index % 4, &text);
    case 32: {
        kvr_runs* made = nullptr;
        const std::int32_t result = kvr_runs_create(takeText(), &made, &value);
        keep(made);
        return result;
    }
    case 33:
        return kvr_runs_free(runs);
    case 34:
        return ask<kvr_run_info>([&](kvr_run_info* record) { return kvr_runs_get(runs, index, record); });
    case 35:
        return kvr_runs_get_document(runs, takeText(), &text);
    case 36:
        return ask<kvr_saved_plan>([&](kvr_saved_plan* record) { return kvr_read_saved_plan(takeText(), record); });
    case 37:
        return ask<kvr_error>(
            [&](kvr_error* record) { return kvr_session_get_look_error(takeHandle<kvr_session>(), index, record); });
    default:
        require(kvr_code(number, index) != nullptr, "There is always a word.");
        require(kvr_exit_code(index) <= 9, "There is always an exit code.");
        return KVR_SUCCESS;
    }
}

void Client::callAny() {
    constexpr std::uint8_t functions = 39;
    const std::int32_t result = call(input_.takeByte() % functions);
    require(result >= KVR_ERROR_VERSION && result <= KVR_UNSUPPORTED, "A result is one of those that are documented.");
    require(result >= 0 || *kvr_last_error() != '\0', "A call that has failed by itself has a text.");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr int mostCalls = 64;
    FuzzInput input(data, size);
    const Box box;
    Client client(input, box.folder());
    for (int call = 0; call < mostCalls && !input.isEmpty(); ++call) {
        client.callAny();
    }
    return 0;
}
