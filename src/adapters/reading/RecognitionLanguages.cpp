#include "adapters/reading/RecognitionLanguages.h"

#include <QLatin1String>

#include <algorithm>
#include <iterator>

namespace tavrine::reading {
namespace {

struct Name {
    QLatin1String code; ///< ISO 639-1, with a script or a country where it decides
    QLatin1String data; ///< the recogniser's
};

// ISO 639-1 to 639-2/T, which the recogniser's data go by, with its own names for written forms. Those with a country
// or a script stand before the plain ones.
constexpr Name names[] = {
    {QLatin1String("zh-Hant"), QLatin1String("chi_tra")},  {QLatin1String("zh-TW"), QLatin1String("chi_tra")},
    {QLatin1String("zh-HK"), QLatin1String("chi_tra")},    {QLatin1String("sr-Latn"), QLatin1String("srp_latn")},
    {QLatin1String("uz-Cyrl"), QLatin1String("uzb_cyrl")}, {QLatin1String("az-Cyrl"), QLatin1String("aze_cyrl")},
    {QLatin1String("af"), QLatin1String("afr")},           {QLatin1String("ar"), QLatin1String("ara")},
    {QLatin1String("az"), QLatin1String("aze")},           {QLatin1String("be"), QLatin1String("bel")},
    {QLatin1String("bg"), QLatin1String("bul")},           {QLatin1String("bn"), QLatin1String("ben")},
    {QLatin1String("bs"), QLatin1String("bos")},           {QLatin1String("ca"), QLatin1String("cat")},
    {QLatin1String("cs"), QLatin1String("ces")},           {QLatin1String("cy"), QLatin1String("cym")},
    {QLatin1String("da"), QLatin1String("dan")},           {QLatin1String("de"), QLatin1String("deu")},
    {QLatin1String("el"), QLatin1String("ell")},           {QLatin1String("en"), QLatin1String("eng")},
    {QLatin1String("eo"), QLatin1String("epo")},           {QLatin1String("es"), QLatin1String("spa")},
    {QLatin1String("et"), QLatin1String("est")},           {QLatin1String("eu"), QLatin1String("eus")},
    {QLatin1String("fa"), QLatin1String("fas")},           {QLatin1String("fi"), QLatin1String("fin")},
    {QLatin1String("fr"), QLatin1String("fra")},           {QLatin1String("ga"), QLatin1String("gle")},
    {QLatin1String("gl"), QLatin1String("glg")},           {QLatin1String("gu"), QLatin1String("guj")},
    {QLatin1String("he"), QLatin1String("heb")},           {QLatin1String("hi"), QLatin1String("hin")},
    {QLatin1String("hr"), QLatin1String("hrv")},           {QLatin1String("hu"), QLatin1String("hun")},
    {QLatin1String("hy"), QLatin1String("hye")},           {QLatin1String("id"), QLatin1String("ind")},
    {QLatin1String("is"), QLatin1String("isl")},           {QLatin1String("it"), QLatin1String("ita")},
    {QLatin1String("ja"), QLatin1String("jpn")},           {QLatin1String("ka"), QLatin1String("kat")},
    {QLatin1String("kk"), QLatin1String("kaz")},           {QLatin1String("km"), QLatin1String("khm")},
    {QLatin1String("kn"), QLatin1String("kan")},           {QLatin1String("ko"), QLatin1String("kor")},
    {QLatin1String("lo"), QLatin1String("lao")},           {QLatin1String("lt"), QLatin1String("lit")},
    {QLatin1String("lv"), QLatin1String("lav")},           {QLatin1String("mk"), QLatin1String("mkd")},
    {QLatin1String("ml"), QLatin1String("mal")},           {QLatin1String("mr"), QLatin1String("mar")},
    {QLatin1String("ms"), QLatin1String("msa")},           {QLatin1String("mt"), QLatin1String("mlt")},
    {QLatin1String("nb"), QLatin1String("nor")},           {QLatin1String("nl"), QLatin1String("nld")},
    {QLatin1String("nn"), QLatin1String("nor")},           {QLatin1String("no"), QLatin1String("nor")},
    {QLatin1String("pa"), QLatin1String("pan")},           {QLatin1String("pl"), QLatin1String("pol")},
    {QLatin1String("pt"), QLatin1String("por")},           {QLatin1String("ro"), QLatin1String("ron")},
    {QLatin1String("ru"), QLatin1String("rus")},           {QLatin1String("sk"), QLatin1String("slk")},
    {QLatin1String("sl"), QLatin1String("slv")},           {QLatin1String("sq"), QLatin1String("sqi")},
    {QLatin1String("sr"), QLatin1String("srp")},           {QLatin1String("sv"), QLatin1String("swe")},
    {QLatin1String("sw"), QLatin1String("swa")},           {QLatin1String("ta"), QLatin1String("tam")},
    {QLatin1String("te"), QLatin1String("tel")},           {QLatin1String("th"), QLatin1String("tha")},
    {QLatin1String("tr"), QLatin1String("tur")},           {QLatin1String("uk"), QLatin1String("ukr")},
    {QLatin1String("ur"), QLatin1String("urd")},           {QLatin1String("uz"), QLatin1String("uzb")},
    {QLatin1String("vi"), QLatin1String("vie")},           {QLatin1String("zh"), QLatin1String("chi_sim")},
};

} // namespace

QString recognizerName(const QString &language) {
    const auto found = std::find_if(std::begin(names), std::end(names), [&](const Name &name) {
        return language == name.code || language.startsWith(name.code + QLatin1Char('-'));
    });
    return found == std::end(names) ? QString() : QString(found->data);
}

QStringList recognitionLanguages(const QStringList &desktop, const QStringList &installed) {
    const QString english = QStringLiteral("eng");
    QStringList languages;
    for (const QString &language : desktop)
        if (const QString data = recognizerName(language);
            data != english && installed.contains(data) && !languages.contains(data))
            languages.append(data);
    if (installed.contains(english))
        languages.append(english);
    return languages;
}

} // namespace tavrine::reading
