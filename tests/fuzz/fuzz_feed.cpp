// UpdateChecker::decide on any feed body: never crashes; an update it reports is a
// newer version than the running one, with an https download address.

#include "FuzzInput.h"
#include "update/UpdateChecker.h"
#include "whatsnew/AppVersion.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace corvane;
    const QByteArray body(reinterpret_cast<const char*>(data), qsizetype(size));
    const UpdateChecker::Result result = UpdateChecker::decide(body, "1.4.2");
    if (result.succeeded && result.update) {
        const auto offered = AppVersion::parse(result.update->version);
        fuzz::require(offered && *offered > *AppVersion::parse("1.4.2"),
                      "an offered update is newer");
    }
    fuzz::require(result.succeeded || !result.update, "a failure offers no update");
    return 0;
}
