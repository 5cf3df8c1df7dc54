#include <benchmark/benchmark.h>
#include <unicode/normalizer2.h>
#include <unicode/uniset.h>
#include <unicode/unistr.h>

#include <string>
#include <vector>

#include "platform/Folding.h"

namespace tarvo {
namespace {

namespace text = platform::text;

// Values as in records: names, companies, streets.
const std::vector<std::string> ascii{
    "Margaret Hamilton", "Acme Industrial Supplies, Inc.", "42 Old Mill Road, Springfield",
    "Follow up on the renewal of the maintenance contract before the end of the quarter"};
const std::vector<std::string> accented{
    "Zoë Müller-Lüdenscheidt", "Société Générale d'Électricité", "Plaça de l'Àngel 3, Ñuñoa",
    "Rückfrage wegen der Verlängerung des Wartungsvertrags für das nächste Quartal"};
const std::vector<std::string> other{"Александр Ёлкин", "தமிழ்நாடு வணிகம்", "株式会社サンプル東京",
                                     "Ελληνική Εταιρεία Άλφα"};

template <class Fold>
void foldAll(benchmark::State& state, const std::vector<std::string>& values, Fold&& fold) {
    std::string out;
    std::int64_t bytes = 0;
    for (auto& value : values) bytes += static_cast<std::int64_t>(value.size());
    for (auto _ : state) {
        out.clear();
        for (auto& value : values) fold(out, value);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * bytes);
}

// The floor looks at each byte once.
void bareLoop(std::string& out, const std::string& value) {
    for (char c : value) out += c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

// Folds in the usual way with ICU: decompose, drop the marks, fold, compose.
void byIcu(std::string& out, const std::string& value) {
    UErrorCode status = U_ZERO_ERROR;
    static const icu::UnicodeSet marks(u"[:Mn:]", status);
    auto text = icu::Normalizer2::getNFDInstance(status)->normalize(icu::UnicodeString::fromUTF8(value), status);
    icu::UnicodeString kept;
    for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1))
        if (auto c = text.char32At(i); !marks.contains(c)) kept.append(c);
    icu::Normalizer2::getNFCInstance(status)->normalize(kept.foldCase(), status).toUTF8String(out);
}

void ours(std::string& out, const std::string& value) { text::appendFolded(out, value); }

BENCHMARK_CAPTURE(foldAll, floor, ascii, bareLoop)->Name("folding/ascii/floor");
BENCHMARK_CAPTURE(foldAll, ours, ascii, ours)->Name("folding/ascii/ours");
BENCHMARK_CAPTURE(foldAll, icu, ascii, byIcu)->Name("folding/ascii/icu");
BENCHMARK_CAPTURE(foldAll, floor, accented, bareLoop)->Name("folding/accented/floor");
BENCHMARK_CAPTURE(foldAll, ours, accented, ours)->Name("folding/accented/ours");
BENCHMARK_CAPTURE(foldAll, icu, accented, byIcu)->Name("folding/accented/icu");
BENCHMARK_CAPTURE(foldAll, ours, other, ours)->Name("folding/other_scripts/ours");
BENCHMARK_CAPTURE(foldAll, icu, other, byIcu)->Name("folding/other_scripts/icu");

}  // namespace
}  // namespace tarvo
