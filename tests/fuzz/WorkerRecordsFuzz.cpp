// The record of an upload worker that a hostile script has broken out of: any bytes at all; and the script that a
// person pastes.

#include "FuzzTarget.h"
#include "upload/ScriptTokenizer.h"
#include "upload/WorkerRecords.h"

namespace tavrine::fuzz {
namespace {

void readRecord(Bytes input) {
    const auto output = decodeWorkerOutput(QByteArray(input.data(), static_cast<qsizetype>(input.size())));
    if (!output)
        return;
    const UploadScriptRunResult result = runResult(*output);
    require(result.url.has_value() != result.error.has_value() && (!result.url || result.url->isValidUtf16()));
    require(!result.error || userMessage(*result.error).isValidUtf16());
    for (const QString &line : result.logs)
        require(line.isValidUtf16());
}

void readScript(Bytes input) {
    const QString text = QString::fromUtf8(input.data(), static_cast<qsizetype>(input.size()));
    int left = -1;
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        ScriptLineState state = ScriptLineState::unpacked(left);
        qsizetype end = 0;
        for (const ScriptToken &token : scriptTokens(line, state)) {
            require(token.start >= end && token.length > 0);
            end = token.start + token.length;
        }
        require(end <= line.size());
        left = state.packed();
        require(ScriptLineState::unpacked(left) == state);
    }
}

const Target recordTarget("worker-record", &readRecord, [] {
    return std::vector<std::string>{
        R"({"url":"https://i.example/a.png","logs":["one","two"]})",
        R"({"errorKind":"runtimeError","errorMessage":"Error: boom \ud83d\ude0e \udc00","logs":[]})",
        R"({"errorKind":"syntaxError","url":null,"logs":["\u0000"]})",
        R"({"logs":[[[[{}]]]],"errorKind":"missingFunction"})"};
});
const Target scriptTarget("script-colours", &readScript, [] {
    return std::vector<std::string>{"async function upload(file) {\n  const a = `x${ {b: `y${1/2}`} }z` / 2; // c\n  "
                                    "return /[/\\]]+/g.test('a\\'')",
                                    "/* a\n * b */ 0x1F + 1e-9 + .5 \"open\n`open\n${"};
});

} // namespace
} // namespace tavrine::fuzz
