// A whole session up to its plan: any archive description against the example rack.

#include "FuzzFolder.h"
#include "FuzzInput.h"
#include "KvEmulation.h"
#include "Property.h"
#include "ServiceState.h"
#include "SessionRun.h"
#include "Transcript.h"
#include "UpdateFileSet.h"

#include <cstddef>
#include <filesystem>
#include <string>

namespace {

using namespace KvNReflasher;

/// The example rack, served once and for all: a session up to its plan does not change it.
class ServedRack {
public:
    ServedRack() {
        require(std::filesystem::copy_file(KV_EXAMPLE_RACK, folder_.text("target.json")), "The rack can be copied.");
        const KvEmulation::KvTServeResult result = KvEmulation::serve(folder_.text());
        require(result.served && result.warnings.empty(), "The example rack is served.");
    }
    ServedRack(const ServedRack&) = delete;
    ServedRack& operator=(const ServedRack&) = delete;
    ~ServedRack() { KvEmulation::reset(); }

    /// Nothing but its description is in its folder, and nothing is held of it.
    void requireUntouched() const {
        require(!std::filesystem::exists(folder_.text("state")), "A session up to its plan only reads.");
        requireNothingHeld();
    }

private:
    FuzzFolder folder_;
};

KvTOptions takeOptions(FuzzInput& input, const FuzzFolder& folder) {
    const std::uint8_t flags = input.takeByte();
    KvTOptions options = optionsOfMode((flags & 1U) != 0 ? performUpdate : showUpdatePlan);
    options.archiveFolder = folder.wideText();
    options.descriptionFileName = L"archive.json";
    options.forceUpdate = (flags & 2U) != 0;
    options.verbose = (flags & 4U) != 0;
    options.configurationElements = (flags & 8U) != 0;
    options.disableCustomElements = (flags & 16U) != 0;
    options.boardTypeFilter = input.takeText();
    options.serialNumberFilter = input.takeText();
    options.elementNameFilter = input.takeText();
    return options;
}

/// The element is out, and nothing else changes.
void checkDisabling(const SessionRun& run) {
    const auto before = run.elements();
    for (std::uint32_t index = 0; index <= before.size(); index += 7) {
        run.session().disableUpdateElement(index);
    }
    const auto after = run.elements();
    require(after.size() == before.size(), "An element that is disabled is still there.");
    for (std::size_t index = 0; index < after.size(); ++index) {
        require(after[index].disabled == (before[index].disabled || index % 7 == 0),
                "The elements that are disabled are out, and no others.");
    }
}

/// One row for each element, behind the heading and its rule.
void checkPlan(const std::string& plan, std::size_t elementCount) {
    const std::size_t width = plan.find('\n');
    const std::size_t rows = elementCount == 0 ? 0 : elementCount + 2;
    require(plan.size() == rows * (width + 1), "The plan has a row for every element.");
}

std::string perform(const KvTOptions& options) {
    Transcript::forget();
    SessionRun run(options);
    const std::uint32_t status = run.prepare();
    std::string text = std::to_string(status) + run.answers() + Transcript::take();
    KvCErrorListPool& errors = KvCErrorManager::getInstance()->getMasterErrorList();
    require(errors.getErrorCount() == 0, "The example rack tells everything.");
    if (status == 1) {
        require(run.elements().empty(), "Without an archive there is nothing to update.");
    } else if (options.mode == showUpdatePlan) {
        const auto elements = run.elements();
        const bool hasRun = run.run();
        const std::string plan = Transcript::take();
        require(hasRun, "A plan can be shown.");
        checkPlan(plan, elements.size());
        text += plan;
    }
    checkDisabling(run);
    return text;
}

} // namespace

/// The text of the description, a zero byte, flags, three filters that end with zero bytes, and the content of the
/// update file "own".
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFolder folder;
    static const bool areWritten = (writeUpdateFiles(folder), true);
    static const ServedRack rack;
    FuzzInput input(data, size);
    folder.write("archive.json", input.takeText());
    const KvTOptions options = takeOptions(input, folder);
    folder.write(ownUpdateFile, input.takeRest());
    const std::string once = perform(options);
    // Seldom, for it takes as long again.
    const bool isSame = size % 8 != 0 || perform(options) == once;
    require(areWritten && isSame, "A session leaves nothing behind that the next one sees.");
    rack.requireUntouched();
    return 0;
}
