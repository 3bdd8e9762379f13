#include "storage/compound_file.h"

#include <algorithm>
#include <string>

#include "foundation/compound_file_signature.h"
#include "foundation/utf.h"

namespace cfb {

namespace {

constexpr uint32_t kMaxRegularSector = 0xFFFFFFFA;
constexpr uint32_t kEndOfChain = 0xFFFFFFFE;
constexpr uint32_t kMiniSectorSize = 64;
constexpr uint64_t kMiniStreamCutoff = 4096;
constexpr size_t kHeaderDifatEntries = 109;

uint16_t readU16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | (p[1] << 8)); }
uint32_t readU32(const uint8_t* p) { return readU16(p) | static_cast<uint32_t>(readU16(p + 2)) << 16; }

std::u16string number(uint64_t value) { return ty::utf8ToWide(std::to_string(value)); }

uint64_t sectorsFor(uint64_t bytes, uint64_t unit) { return bytes / unit + (bytes % unit != 0); }

Failure corrupt(std::u16string text) { return Failure{STG_E_DOCFILECORRUPT, std::move(text)}; }

Failure headerFailure(ty::CompoundHeaderFault fault)
{
    switch (fault) {
    case ty::CompoundHeaderFault::TooShort:
        return {STG_E_FILEALREADYEXISTS, u"The file is shorter than a compound file header"};
    case ty::CompoundHeaderFault::BadSignature:
        return {STG_E_FILEALREADYEXISTS, u"The file has no compound file signature"};
    case ty::CompoundHeaderFault::BadByteOrder:
        return {STG_E_INVALIDHEADER, u"The header's byte order mark is not FFFE"};
    case ty::CompoundHeaderFault::BadVersion:
        return {STG_E_INVALIDHEADER,
                u"The header is neither version 3 with 512-byte sectors nor version 4 with 4096-byte sectors"};
    case ty::CompoundHeaderFault::BadMiniSectorShift:
        return {STG_E_INVALIDHEADER, u"The header's mini sectors are not 64 bytes"};
    case ty::CompoundHeaderFault::BadMiniStreamCutoff:
    default:
        return {STG_E_INVALIDHEADER, u"The header's mini stream cutoff is not 4096 bytes"};
    }
}

}  // namespace

CompoundFile::CompoundFile(std::unique_ptr<ByteSource> source) : source_(std::move(source))
{
    readHeader();
    readFat();
    readDirectory();
}

void CompoundFile::readHeader()
{
    uint8_t header[ty::kCompoundFileHeaderSize];
    uint64_t fileSize = source_->size();
    size_t available = static_cast<size_t>(std::min<uint64_t>(fileSize, sizeof header));
    source_->read(0, header, sizeof header);
    ty::CompoundHeaderFault fault = ty::checkCompoundFileHeader(header, available);
    if (fault != ty::CompoundHeaderFault::None) throw headerFailure(fault);

    majorVersion_ = readU16(header + 0x1A);
    sectorSize_ = 1u << readU16(header + 0x1E);
    // The header takes the first sector whole; a short last sector still counts.
    sectorCount_ = fileSize > sectorSize_ ? sectorsFor(fileSize - sectorSize_, sectorSize_) : 0;
    fatSectorCount_ = readU32(header + 0x2C);
    firstDirectorySector_ = readU32(header + 0x30);
    firstMiniFatSector_ = readU32(header + 0x3C);
    firstDifatSector_ = readU32(header + 0x44);
    for (size_t i = 0; i < kHeaderDifatEntries; ++i) headerDifat_.push_back(readU32(header + 0x4C + 4 * i));

    if (fatSectorCount_ > sectorCount_)
        throw corrupt(u"The header counts " + number(fatSectorCount_) + u" FAT sectors, but the file holds only " +
                      number(sectorCount_) + u" sectors");
}

void CompoundFile::readFat()
{
    // The FAT's sectors: the header's 109 entries, then the DIFAT sectors, each ending in a
    // link to the next.
    std::vector<uint32_t> fatSectors(headerDifat_.begin(),
                                     headerDifat_.begin() + std::min<size_t>(fatSectorCount_, kHeaderDifatEntries));
    std::vector<uint32_t> difatSectors;
    uint32_t next = firstDifatSector_;
    const size_t perSector = sectorSize_ / 4 - 1;
    std::vector<uint8_t> bytes(sectorSize_);
    while (fatSectors.size() < fatSectorCount_) {
        if (next > kMaxRegularSector)
            throw corrupt(u"The DIFAT ends after " + number(fatSectors.size()) + u" of the " +
                          number(fatSectorCount_) + u" FAT sectors");
        if (next >= sectorCount_)
            throw corrupt(u"The DIFAT reaches sector " + number(next) + u", past the end of the file");
        if (std::find(difatSectors.begin(), difatSectors.end(), next) != difatSectors.end())
            throw corrupt(u"The DIFAT chain loops back to sector " + number(next));
        difatSectors.push_back(next);
        source_->read(sectorOffset(next), bytes.data(), bytes.size());
        for (size_t i = 0; i < perSector && fatSectors.size() < fatSectorCount_; ++i)
            fatSectors.push_back(readU32(bytes.data() + 4 * i));
        next = readU32(bytes.data() + 4 * perSector);
    }
    for (uint32_t sector : fatSectors)
        if (sector >= sectorCount_)
            throw corrupt(u"A FAT sector is listed at " + number(sector) + u", past the end of the file");
    std::vector<uint8_t> fatBytes = readSectors(fatSectors);
    fat_.resize(fatBytes.size() / 4);
    for (size_t i = 0; i < fat_.size(); ++i) fat_[i] = readU32(fatBytes.data() + 4 * i);
}

void CompoundFile::readDirectory()
{
    std::vector<uint8_t> bytes = readSectors(chainOf(firstDirectorySector_, fat_, sectorCount_, 0, u"directory"));
    std::vector<DirectoryEntry> entries;
    entries.reserve(bytes.size() / kDirectoryEntrySize);
    for (size_t at = 0; at + kDirectoryEntrySize <= bytes.size(); at += kDirectoryEntrySize)
        entries.push_back(parseDirectoryEntry(bytes.data() + at, majorVersion_));
    directory_ = std::make_unique<DirectoryTree>(std::move(entries));
}

std::vector<uint32_t> CompoundFile::chainOf(uint32_t start, const std::vector<uint32_t>& table, uint64_t limit,
                                            uint64_t wanted, const std::u16string& what) const
{
    limit = std::min<uint64_t>(limit, table.size());
    std::vector<uint32_t> chain;
    uint32_t sector = start;
    while (wanted == 0 || chain.size() < wanted) {
        if (sector == kEndOfChain) {
            if (wanted == 0) break;
            throw corrupt(u"The " + what + u" chain ends after " + number(chain.size()) + u" sectors, short of the " +
                          number(wanted) + u" its size needs");
        }
        if (sector > kMaxRegularSector)
            throw corrupt(u"The " + what + u" chain reaches a free or reserved sector mark");
        if (sector >= limit)
            throw corrupt(u"The " + what + u" chain reaches sector " + number(sector) + u", outside the " +
                          number(limit) + u" there are");
        // No chain is longer than the sectors there are; one that gets there has looped.
        if (chain.size() == limit) throw corrupt(u"The " + what + u" chain loops");
        chain.push_back(sector);
        sector = table[sector];
    }
    std::vector<uint32_t> sorted = chain;
    std::sort(sorted.begin(), sorted.end());
    auto repeated = std::adjacent_find(sorted.begin(), sorted.end());
    if (repeated != sorted.end())
        throw corrupt(u"The " + what + u" chain loops back to sector " + number(*repeated));
    return chain;
}

std::vector<uint8_t> CompoundFile::readSectors(const std::vector<uint32_t>& sectors)
{
    std::vector<uint8_t> bytes(sectors.size() * sectorSize_);
    for (size_t i = 0; i < sectors.size(); ++i)
        source_->read(sectorOffset(sectors[i]), bytes.data() + i * sectorSize_, sectorSize_);
    return bytes;
}

const StreamLayout& CompoundFile::miniStream()
{
    if (miniStreamFailure_) throw *miniStreamFailure_;
    if (miniStream_) return *miniStream_;
    try {
        StreamLayout layout;
        layout.size = directory_->entry(0).size;
        uint64_t wanted = sectorsFor(layout.size, sectorSize_);
        if (wanted > sectorCount_)
            throw corrupt(u"The mini stream's size " + number(layout.size) + u" is larger than the file");
        if (wanted > 0) layout.sectors = chainOf(directory_->entry(0).startSector, fat_, sectorCount_, wanted, u"mini stream");
        std::vector<uint32_t> miniFatSectors;
        if (firstMiniFatSector_ != kEndOfChain)
            miniFatSectors = chainOf(firstMiniFatSector_, fat_, sectorCount_, 0, u"mini FAT");
        std::vector<uint8_t> bytes = readSectors(miniFatSectors);
        miniFat_.resize(bytes.size() / 4);
        for (size_t i = 0; i < miniFat_.size(); ++i) miniFat_[i] = readU32(bytes.data() + 4 * i);
        miniStream_ = std::move(layout);
    } catch (const Failure& failure) {
        miniStreamFailure_ = failure;
        throw;
    }
    return *miniStream_;
}

uint64_t CompoundFile::miniSectorLimit() const
{
    return sectorsFor(miniStream_->size, kMiniSectorSize);
}

StreamLayout CompoundFile::layoutOf(uint32_t streamId)
{
    const DirectoryEntry& entry = directory_->entry(streamId);
    StreamLayout layout;
    layout.size = entry.size;
    layout.inMiniStream = entry.size < kMiniStreamCutoff;
    if (layout.inMiniStream) {
        uint64_t wanted = sectorsFor(entry.size, kMiniSectorSize);
        if (wanted == 0) return layout;
        miniStream();
        layout.sectors = chainOf(entry.startSector, miniFat_, miniSectorLimit(), wanted, u"stream's mini");
        return layout;
    }
    uint64_t wanted = sectorsFor(entry.size, sectorSize_);
    if (wanted > sectorCount_)
        throw corrupt(u"The stream's size " + number(entry.size) + u" is larger than the file");
    layout.sectors = chainOf(entry.startSector, fat_, sectorCount_, wanted, u"stream");
    return layout;
}

uint64_t CompoundFile::read(const StreamLayout& layout, uint64_t position, void* out, uint64_t count)
{
    if (position >= layout.size) return 0;
    count = std::min(count, layout.size - position);
    auto* target = static_cast<uint8_t*>(out);
    const uint64_t unit = layout.inMiniStream ? kMiniSectorSize : sectorSize_;
    uint64_t done = 0;
    while (done < count) {
        size_t index = static_cast<size_t>(position / unit);
        uint64_t within = position % unit;
        uint64_t piece;
        if (!layout.inMiniStream) {
            // Sectors that follow each other in the file are read in one go.
            size_t last = index;
            piece = unit - within;
            while (piece < count - done && last + 1 < layout.sectors.size() &&
                   layout.sectors[last + 1] == layout.sectors[last] + 1) {
                ++last;
                piece += unit;
            }
            piece = std::min(piece, count - done);
            source_->read(sectorOffset(layout.sectors[index]) + within, target + done, static_cast<size_t>(piece));
        } else {
            piece = std::min(unit - within, count - done);
            uint64_t offset = layout.sectors[index] * unit + within;
            const StreamLayout& mini = *miniStream_;
            size_t holder = static_cast<size_t>(offset / sectorSize_);
            if (holder >= mini.sectors.size()) throw corrupt(u"A mini sector lies past the end of the mini stream");
            source_->read(sectorOffset(mini.sectors[holder]) + offset % sectorSize_, target + done,
                          static_cast<size_t>(piece));
        }
        done += piece;
        position += piece;
    }
    return done;
}

}  // namespace cfb
