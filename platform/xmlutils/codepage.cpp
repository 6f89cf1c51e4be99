#include <xmlutils/codepage.h>

#include <iconv.h>

#include <oviapi/text.h>
#include <xmlutils/exception.h>

namespace XMLUtils {

namespace {

CodePage makeCodePage(XMLEncoding encoding)
{
    const char* name = encodingName(encoding);
    const iconv_t converter = iconv_open("WCHAR_T", name);
    if (converter == reinterpret_cast<iconv_t>(-1))
        throw XMLException(L"The system has no conversion from the encoding " +
                           OviAPI::utf8ToWide(name));
    CodePage page{};
    for (size_t i = 0; i < page.size(); ++i) {
        char byte = static_cast<char>(i);
        wchar_t character = 0;
        char* in = &byte;
        char* out = reinterpret_cast<char*>(&character);
        size_t inLeft = 1;
        size_t outLeft = sizeof character;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        const size_t result = iconv(converter, &in, &inLeft, &out, &outLeft);
        const bool converted = result != static_cast<size_t>(-1) && outLeft == 0;
        page[i] = converted ? static_cast<int>(character) : -1;
    }
    iconv_close(converter);
    return page;
}

} // namespace

const CodePage* codePageOf(XMLEncoding encoding)
{
    if (encoding == XMLEncoding::Koi8R) {
        static const CodePage koi8r = makeCodePage(XMLEncoding::Koi8R);
        return &koi8r;
    }
    if (encoding == XMLEncoding::Windows1251) {
        static const CodePage windows1251 = makeCodePage(XMLEncoding::Windows1251);
        return &windows1251;
    }
    return nullptr;
}

} // namespace XMLUtils
