// MenuCatalogJson::read (the overlay preview's input, `corvane-menus dump --json`'s output) on
// any bytes: never crashes; a catalog it accepts writes and reads back as itself.

#include "FuzzInput.h"
#include "menus/MenuCatalogJson.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace corvane;
    const QByteArray json(reinterpret_cast<const char*>(data), qsizetype(size));
    const MenuCatalogJson::ReadResult read = MenuCatalogJson::read(json);
    fuzz::require(read.catalog || !read.error.isEmpty(), "a refusal says why");
    if (read.catalog) {
        const MenuCatalogJson::ReadResult again =
            MenuCatalogJson::read(MenuCatalogJson::write(*read.catalog));
        fuzz::require(again.catalog && *again.catalog == *read.catalog, "write then read");
    }
    return 0;
}
