// The record of an upload worker that a hostile script has broken out of: any bytes at all.

#include "upload/WorkerRecords.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto output = tavrine::decodeWorkerOutput(bytes);
    if (!output)
        return 0;
    const tavrine::UploadScriptRunResult result = tavrine::runResult(*output);
    bool isSound = result.url.has_value() != result.error.has_value() && (!result.url || result.url->isValidUtf16());
    isSound = isSound && (!result.error || tavrine::userMessage(*result.error).isValidUtf16());
    for (const QString &line : result.logs)
        isSound = isSound && line.isValidUtf16();
    if (!isSound)
        std::abort();
    return 0;
}

extern "C" const char *const fuzzSeeds[] = {
    R"({"url":"https://i.example/a.png","logs":["one","two"]})",
    R"({"errorKind":"runtimeError","errorMessage":"Error: boom \ud83d\ude0e \udc00","logs":[]})",
    R"({"errorKind":"syntaxError","url":null,"logs":["\u0000"]})",
    R"({"logs":[[[[{}]]]],"errorKind":"missingFunction"})",
    nullptr,
};
