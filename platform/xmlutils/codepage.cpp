#include <xmlutils/codepage.h>

#include <oviapi/text.h>
#include <xmlutils/exception.h>

namespace XMLUtils {

namespace {

CodePage makeCodePage(XMLEncoding encoding)
{
    const char* name = encodingName(encoding);
    const auto page = OviAPI::byteCodesOf(name);
    if (!page)
        throw XMLException(L"The system has no conversion from the encoding " +
                           OviAPI::utf8ToWide(name));
    return *page;
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
