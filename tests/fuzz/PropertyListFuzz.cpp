// Reads any bytes as preferences, and what could be read is written and read again. To be linked with tavrine_base,
// Qt6::Core and the fuzzing driver; the corpus may be any property lists, in XML and in binary form.
#include "base/PropertyList.h"

#include <QByteArray>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using tavrine::PropertyList;
    const auto list =
        PropertyList::read(QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    if (!list)
        return 0;
    const auto text = list->xml();
    if (!text)
        return 0; // larger than the limit once spelled out
    const auto again = PropertyList::read(*text);
    if (!again || again->keys() != list->keys())
        std::abort();
    for (const QString &key : list->keys()) {
        if (!list->isSame(key, *again) || list->value(key).has_value() != again->value(key).has_value())
            std::abort();
    }
    return 0;
}
