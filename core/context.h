#pragma once
// The one settings object of the process.
#include <cstdint>
#include <string>
#include <vector>

namespace mcl {

class Context;

// An object that dies with the context.
class ContextAtom {
public:
    virtual ~ContextAtom();
};

class Context {
public:
    // Throws if the process already has one.
    Context();
    ~Context();
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    static Context* instance() { return current_; }
    // The context's pictures, or the user's when no context exists.
    static std::u16string dateFormatOrDefault();
    static std::u16string timeFormatOrDefault();

    void setLogFile(const std::u16string& path);
    void addAtom(ContextAtom* atom);
    void removeAtom(ContextAtom* atom);

    const std::u16string& getTimeFormat() const { return timeFormat; }
    void setTimeFormat(std::u16string picture) { timeFormat = std::move(picture); }
    const std::u16string& getDateFormat() const { return dateFormat; }
    void setDateFormat(std::u16string picture) { dateFormat = std::move(picture); }
    bool getUseMapiIfPossible() const { return useMapiIfPossible != 0; }
    // Only VARIANT_TRUE (-1) turns it on.
    void setUseMapiIfPossible(int32_t value) { useMapiIfPossible = value == -1 ? 1 : 0; }
    uint32_t getContextVersion() const { return contextVersion; }
    void setContextVersion(uint32_t version) { contextVersion = version; }

private:
    std::u16string timeFormat = u"hh':'mm':'ss";
    std::u16string dateFormat = u"yyyy'.'MM'.'dd";
    uint8_t useMapiIfPossible = 0;
    std::vector<ContextAtom*> atoms;
    uint32_t contextVersion = 2;

    static Context* current_;
};

// The product's identity: name, vendor and a third field left empty.
struct ApplicationIdentity {
    std::u16string product;
    std::u16string vendor;
    std::u16string extra;
    static ApplicationIdentity& instance();
};

}  // namespace mcl
