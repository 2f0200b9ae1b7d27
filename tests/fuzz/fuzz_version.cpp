// AppVersion::parse on any text: never crashes, and a parsed version reads back as
// itself from its own text form.

#include "FuzzInput.h"
#include "whatsnew/AppVersion.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace corvane;
    const std::optional<AppVersion> version = AppVersion::parse(fuzz::text(data, size));
    if (version) {
        const std::optional<AppVersion> again = AppVersion::parse(version->description());
        fuzz::require(again && *again == *version, "parse(description()) == version");
        fuzz::require(!(*version < *version), "a version is not below itself");
    }
    return 0;
}
