#include "host/base/language_code.h"

#include <algorithm>
#include <cctype>

namespace Nifikral {
namespace {

// The two letters, then the three that catalogues (T) and libraries (B) use.
constexpr std::string_view languages =
    "aa:aar ab:abk af:afr ak:aka am:amh an:arg ar:ara as:asm av:ava ay:aym az:aze ba:bak be:bel bg:bul bm:bam "
    "bn:ben bo:bod:tib br:bre bs:bos ca:cat ce:che co:cos cs:ces:cze cv:chv cy:cym:wel da:dan de:deu:ger dv:div "
    "dz:dzo ee:ewe el:ell:gre en:eng eo:epo es:spa et:est eu:eus:baq fa:fas:per ff:ful fi:fin fj:fij fo:fao "
    "fr:fra:fre fy:fry ga:gle gd:gla gl:glg gn:grn gu:guj gv:glv ha:hau he:heb hi:hin hr:hrv ht:hat hu:hun "
    "hy:hye:arm ia:ina id:ind ig:ibo is:isl:ice it:ita ja:jpn jv:jav ka:kat:geo kg:kon kk:kaz kl:kal km:khm "
    "kn:kan ko:kor ks:kas ku:kur kw:cor ky:kir la:lat lb:ltz lg:lug ln:lin lo:lao lt:lit lv:lav mg:mlg "
    "mi:mri:mao mk:mkd:mac ml:mal mn:mon mr:mar ms:msa:may mt:mlt my:mya:bur nb:nob ne:nep nl:nld:dut nn:nno "
    "no:nor nv:nav ny:nya oc:oci om:orm or:ori os:oss pa:pan pl:pol ps:pus pt:por qu:que rm:roh rn:run "
    "ro:ron:rum ru:rus rw:kin sa:san sc:srd sd:snd se:sme sg:sag si:sin sk:slk:slo sl:slv sm:smo sn:sna so:som "
    "sq:sqi:alb sr:srp ss:ssw st:sot su:sun sv:swe sw:swa ta:tam te:tel tg:tgk th:tha ti:tir tk:tuk tl:tgl "
    "tn:tsn to:ton tr:tur ts:tso tt:tat ug:uig uk:ukr ur:urd uz:uzb ve:ven vi:vie vo:vol wa:wln wo:wol xh:xho "
    "yi:yid yo:yor za:zha zh:zho:chi zu:zul ";

}  // namespace

std::string LanguageCode(std::string_view tag) {
    std::string code(tag.substr(0, tag.find_first_of("-_")));
    std::transform(code.begin(), code.end(), code.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    if (code.size() < 2 || code.size() > 3 || code.find_first_of(": ") != std::string::npos) return {};
    // A language's letters stand behind a blank where they are two, and behind a colon where they are three.
    const char before = code.size() == 2 ? ' ' : ':';
    for (std::size_t at = languages.find(code); at != std::string_view::npos; at = languages.find(code, at + 1)) {
        const std::size_t end = at + code.size();
        if ((at > 0 ? languages[at - 1] : ' ') != before || (languages[end] != ':' && languages[end] != ' ')) continue;
        return std::string(languages.substr(before == ' ' ? at : languages.rfind(' ', at) + 1, 2));
    }
    return {};
}

}  // namespace Nifikral
