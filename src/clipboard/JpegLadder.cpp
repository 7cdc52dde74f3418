#include "clipboard/JpegLadder.h"

#include "ports/ImageCoder.h"

namespace tavrine {

std::optional<QByteArray> encodeForStorage(JpegSource &source) {
    for (const double factor : jpegFactors) {
        const bool isLast = factor == jpegFactors.back();
        if (!isLast && source.isCertainlyLargerThan(jpegSizeLimit, factor))
            continue;
        std::optional<QByteArray> data = source.encode(factor);
        if (!data || isLast || data->size() <= jpegSizeLimit)
            return data;
    }
    return std::nullopt;
}

} // namespace tavrine
