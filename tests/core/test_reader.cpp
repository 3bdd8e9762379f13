#include "test_reader.h"

#include <cstring>
#include <map>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "core/reader_factory.h"
#include "core/types.h"
#include "foundation/time_picture.h"
#include "foundation/utf.h"

namespace testing_reader {

namespace {

std::vector<uint8_t> valueBytes(uint32_t tag, const std::string& text)
{
    std::vector<uint8_t> bytes;
    auto put = [&](const void* p, size_t n) {
        bytes.insert(bytes.end(), static_cast<const uint8_t*>(p), static_cast<const uint8_t*>(p) + n);
    };
    switch (tag & 0xFFFF) {
    case 0x1F: {
        std::u16string wide = ty::utf8ToWide(text);
        put(wide.data(), wide.size() * 2);
        break;
    }
    case 0x1E: put(text.data(), text.size()); break;
    case 0x02:
    case 0x0B: {
        uint16_t v = static_cast<uint16_t>(std::stoul(text));
        put(&v, 2);
        break;
    }
    case 0x03: {
        uint32_t v = static_cast<uint32_t>(std::stoul(text));
        put(&v, 4);
        break;
    }
    case 0x40: {
        ty::SystemTime t;
        int y, mo, d, h, mi, s;
        std::sscanf(text.c_str(), "%d-%d-%d %d:%d:%d", &y, &mo, &d, &h, &mi, &s);
        t.wYear = uint16_t(y), t.wMonth = uint16_t(mo), t.wDay = uint16_t(d);
        t.wHour = uint16_t(h), t.wMinute = uint16_t(mi), t.wSecond = uint16_t(s);
        put(&t, sizeof t);
        break;
    }
    default:
        for (size_t i = 0; i + 1 < text.size(); i += 2)
            bytes.push_back(static_cast<uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

template <const char16_t* Name>
mcl::BaseReader* make(const std::u16string& path)
{
    return new TestReader(Name, path);
}

constexpr char16_t kEml[] = u"EML", kMsg[] = u"MSG", kTnef[] = u"TNEF", kMapi[] = u"PSTMAPI",
                   kPst3[] = u"PST3", kLegacy[] = u"PSTLegacy";

}  // namespace

TestReader::TestReader(std::u16string className, const std::u16string& path)
    : BaseReader(std::move(className), path, FileEML)
{
}

uint32_t TestReader::setHeaderMode(uint32_t value)
{
    uint32_t old = headerMode;
    headerMode = value;
    return old;
}

bool TestReader::doInit()
{
    std::ifstream in(ty::wideToUtf8(getFilePath()));
    std::string line;
    messages.emplace_back();
    while (std::getline(in, line)) {
        if (line == "===")
            messages.emplace_back();
        else if (line == "fail-init")
            failInit = true;
        else if (line == "error-init")
            errorInit = true;
        else if (line == "throw-load")
            throwLoad = true;
        else if (!line.empty())
            messages.back().push_back(line);
    }
    if (errorInit) setError(u"Bad test file", u"TestReader::doInit", 0, mul::E_FAIL_CODE);
    return !failInit && !errorInit;
}

bool TestReader::loadMessage(size_t index, mcl::MailProperties* props, uint32_t filter)
{
    if (throwLoad) throw std::runtime_error("test load failure");
    if (index >= messages.size()) {
        setError(u"No such message", u"TestReader::doLoad", 0, mul::E_FAIL_CODE);
        return false;
    }
    std::map<std::string, uint32_t> rows;
    for (const std::string& line : messages[index]) {
        std::istringstream fields(line);
        uint32_t section = 0;
        std::string parentLabel, tagText;
        fields >> section >> parentLabel >> tagText;
        if (!(section & filter)) continue;
        uint32_t parent = parentLabel == "0" ? 0 : rows[parentLabel];
        if (tagText == "row") {
            std::string label, rowTag;
            fields >> label >> rowTag;
            rows[label] = props->addProperty(std::stoul(rowTag, nullptr, 16), parent, u"")->id();
            continue;
        }
        std::string value;
        std::getline(fields >> std::ws, value);
        uint32_t tag = static_cast<uint32_t>(std::stoul(tagText, nullptr, 16));
        std::vector<uint8_t> bytes = valueBytes(tag, value);
        props->addProperty(tag, parent, u"", bytes.data(), bytes.size());
    }
    return true;
}

bool TestReader::doLoad(mcl::MailProperties* props, uint32_t* filter)
{
    filtersSeen.push_back(*filter);
    if (*filter == mcl::LoadListing) *filter = mcl::LoadHeaders;  // a listing reads the headers
    decodeEnabled = 1;
    bool ok = loadMessage(currentMessage, props, *filter);
    decodeMultibyteStrings(props);
    return ok;
}

bool TestReader::doLoadByID(mcl::MailProperties* props, uint32_t* filter, const std::u16string& id)
{
    filtersSeen.push_back(*filter);
    return loadMessage(std::stoul(ty::wideToUtf8(id)), props, *filter);
}

bool TestReader::doNext()
{
    if (currentMessage + 1 >= messages.size()) return false;
    ++currentMessage;
    return true;
}

bool TestReader::doSaveEmbeddedMessage(mcl::Attachment*, mcl::MailProperties*, const std::u16string& path)
{
    lastSavedPath = path;
    return true;
}

bool TestReader::doSaveMessage(mcl::MailProperties*, const std::u16string& path)
{
    lastSavedPath = path;
    return true;
}

mcl::ReaderFactories& savedFactories()
{
    static mcl::ReaderFactories saved;
    return saved;
}

void installTestReaders()
{
    mcl::ReaderFactories& f = mcl::readerFactories();
    savedFactories() = f;
    f.eml = make<kEml>;
    f.msg = make<kMsg>;
    f.tnef = make<kTnef>;
    f.pstThroughMapi = make<kMapi>;
    f.pstStandalone = make<kPst3>;
    f.pstStandaloneLegacy = make<kLegacy>;
}

void removeTestReaders()
{
    mcl::readerFactories() = savedFactories();
}

}  // namespace testing_reader
