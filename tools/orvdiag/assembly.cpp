#include "tools/orvdiag/assembly.h"

#include <algorithm>
#include <initializer_list>
#include <stdexcept>

namespace orvdiag {

namespace {

// Little-endian numbers at offsets; throws std::out_of_range beyond the end.
class bytes {
public:
    explicit bytes(std::string_view dataIn) : data(dataIn) {}

    std::uint64_t number(std::size_t offset, std::size_t size) const {
        const std::string_view part = from(offset);
        std::uint64_t result = 0;
        for (std::size_t i = size; i-- > 0;) {
            result = result << 8 | static_cast<unsigned char>(part.at(i));
        }
        return result;
    }
    std::uint16_t u16(std::size_t offset) const { return static_cast<std::uint16_t>(number(offset, 2)); }
    std::uint32_t u32(std::size_t offset) const { return static_cast<std::uint32_t>(number(offset, 4)); }

    // Up to the next zero.
    std::string_view text(std::size_t offset) const {
        const std::string_view part = from(offset);
        return part.substr(0, part.find('\0'));
    }

    std::string_view from(std::size_t offset) const { return data.substr(offset); }

private:
    std::string_view data;
};

// The tables of CLI metadata up to the assembly's own, by their columns (ECMA-335, II.22). A column is a number, an
// index into a heap, an index into one of several tables, or, below 0x40, an index into the table of that number.
enum column : std::uint8_t {
    none,  // no column is an index into table 0
    number2 = 0x40,
    number4,
    strings,
    guids,
    blobs,
    typedeforref,
    hasconstant,
    hascustomattribute,
    hasfieldmarshal,
    hasdeclsecurity,
    memberrefparent,
    hassemantics,
    methoddeforref,
    memberforwarded,
    customattributetype,
    resolutionscope,
};
constexpr int assemblytable = 0x20;
constexpr int tablecount = 0x40;

struct columns {
    std::uint8_t kinds[6];
};
constexpr columns tables[assemblytable] = {
    {number2, strings, guids, guids, guids},                // 00 Module
    {resolutionscope, strings, strings},                    // 01 TypeRef
    {number4, strings, strings, typedeforref, 0x04, 0x06},  // 02 TypeDef
    {0x04},                                                 // 03 FieldPtr
    {number2, strings, blobs},                              // 04 Field
    {0x06},                                                 // 05 MethodPtr
    {number4, number2, number2, strings, blobs, 0x08},      // 06 MethodDef
    {0x08},                                                 // 07 ParamPtr
    {number2, number2, strings},                            // 08 Param
    {0x02, typedeforref},                                   // 09 InterfaceImpl
    {memberrefparent, strings, blobs},                      // 0A MemberRef
    {number2, hasconstant, blobs},                          // 0B Constant
    {hascustomattribute, customattributetype, blobs},       // 0C CustomAttribute
    {hasfieldmarshal, blobs},                               // 0D FieldMarshal
    {number2, hasdeclsecurity, blobs},                      // 0E DeclSecurity
    {number2, number4, 0x02},                               // 0F ClassLayout
    {number4, 0x04},                                        // 10 FieldLayout
    {blobs},                                                // 11 StandAloneSig
    {0x02, 0x14},                                           // 12 EventMap
    {0x14},                                                 // 13 EventPtr
    {number2, strings, typedeforref},                       // 14 Event
    {0x02, 0x17},                                           // 15 PropertyMap
    {0x17},                                                 // 16 PropertyPtr
    {number2, strings, blobs},                              // 17 Property
    {number2, 0x06, hassemantics},                          // 18 MethodSemantics
    {0x02, methoddeforref, methoddeforref},                 // 19 MethodImpl
    {strings},                                              // 1A ModuleRef
    {blobs},                                                // 1B TypeSpec
    {number2, memberforwarded, strings, 0x1A},              // 1C ImplMap
    {number4, 0x04},                                        // 1D FieldRVA
    {number4, number4},                                     // 1E EncLog
    {number4},                                              // 1F EncMap
};

// A coded index spends some bits on telling which table it points into.
struct codedindex {
    int tagbits;
    std::initializer_list<int> tables;
};
const codedindex codedindexes[] = {
    {2, {0x02, 0x01, 0x1B}},  // typedeforref
    {2, {0x04, 0x08, 0x17}},  // hasconstant
    {5, {0x06, 0x04, 0x01, 0x02, 0x08, 0x09, 0x0A, 0x00, 0x0E, 0x17, 0x14,
         0x11, 0x1A, 0x1B, 0x20, 0x23, 0x26, 0x27, 0x28, 0x2A, 0x2C, 0x2B}},  // hascustomattribute
    {1, {0x04, 0x08}},                                                        // hasfieldmarshal
    {2, {0x02, 0x06, 0x20}},                                                  // hasdeclsecurity
    {3, {0x02, 0x01, 0x1A, 0x06, 0x1B}},                                      // memberrefparent
    {1, {0x14, 0x17}},                                                        // hassemantics
    {1, {0x06, 0x0A}},                                                        // methoddeforref
    {1, {0x04, 0x06}},                                                        // memberforwarded
    {3, {0x06, 0x0A}},                                                        // customattributetype
    {2, {0x00, 0x1A, 0x23, 0x01}},                                            // resolutionscope
};

struct tablestream {
    int heapsizes;
    std::array<std::uint32_t, tablecount> rows;

    std::size_t heapindex(column heap) const {
        const int bit = heap == strings ? 1 : heap == guids ? 2 : 4;
        return (heapsizes & bit) != 0 ? 4 : 2;
    }

    std::size_t columnsize(std::uint8_t kind) const {
        switch (kind) {
            case none:
                return 0;
            case number2:
                return 2;
            case number4:
                return 4;
            case strings:
            case guids:
            case blobs:
                return heapindex(static_cast<column>(kind));
            default:
                break;
        }
        if (kind < number2) {
            return rows[kind] < 1u << 16 ? 2 : 4;
        }
        const codedindex& index = codedindexes[kind - typedeforref];
        std::uint32_t most = 0;
        for (const int table : index.tables) {
            most = std::max(most, rows[table]);
        }
        return most < 1u << (16 - index.tagbits) ? 2 : 4;
    }

    std::uint64_t tablesize(int table) const {
        std::uint64_t row = 0;
        for (const std::uint8_t kind : tables[table].kinds) {
            row += columnsize(kind);
        }
        return row * rows[table];
    }
};

// Fills in name and version from the metadata's root (II.24.2).
void readassembly(const bytes& root, image& result) {
    if (root.u32(0) != 0x424A5342) {
        throw std::out_of_range("no metadata");
    }
    std::size_t tablesat = 0;
    std::size_t stringsat = 0;
    std::size_t header = 16 + root.u32(12) + 4;
    for (int i = root.u16(header - 2); i > 0; --i) {
        const std::string_view name = root.text(header + 8);
        if (name == "#~") {
            tablesat = root.u32(header);
        } else if (name == "#Strings") {
            stringsat = root.u32(header);
        }
        header += 8 + (name.size() / 4 + 1) * 4;
    }

    const bytes stream(root.from(tablesat));
    tablestream layout = {stream.u16(6) & 0xFF, {}};
    const std::uint64_t present = stream.number(8, 8);
    std::uint64_t at = 24;
    for (int table = 0; table < tablecount; ++table) {
        if (present >> table & 1) {
            layout.rows[table] = stream.u32(static_cast<std::size_t>(at));
            at += 4;
        }
    }
    if (layout.rows[assemblytable] == 0) {
        return;  // a module that belongs to an assembly in another file
    }
    for (int table = 0; table < assemblytable; ++table) {
        at += layout.tablesize(table);
    }
    const bytes row(stream.from(at < SIZE_MAX ? static_cast<std::size_t>(at) : SIZE_MAX));
    for (std::size_t i = 0; i < 4; ++i) {
        result.version[i] = row.u16(4 + 2 * i);
    }
    const std::size_t name = 16 + layout.heapindex(blobs);
    result.name = root.text(stringsat + static_cast<std::size_t>(row.number(name, layout.heapindex(strings))));
    result.managed = true;
}

image readchecked(const bytes& file) {
    const std::size_t pe = file.u32(0x3C);
    if (file.u16(0) != 0x5A4D || file.u32(pe) != 0x4550) {
        throw std::out_of_range("no portable executable");
    }
    const std::size_t sections = file.u16(pe + 6);
    const std::size_t optional = pe + 24;
    const std::size_t sectiontable = optional + file.u16(pe + 20);
    image result = {file.u16(optional) == 0x20B, false, {}, {}};
    const std::size_t directories = optional + (result.sixtyfourbit ? 108 : 92);
    constexpr std::size_t clidirectory = 14;
    if (file.u32(directories) <= clidirectory) {
        return result;
    }
    // Where the file holds what the loader would put at an address.
    const auto offset = [&](std::uint32_t address) -> std::size_t {
        for (std::size_t i = 0; i < sections; ++i) {
            const std::size_t section = sectiontable + 40 * i;
            const std::uint32_t start = file.u32(section + 12);
            if (address >= start && address - start < file.u32(section + 16)) {
                return address - start + file.u32(section + 20);
            }
        }
        throw std::out_of_range("in no section");
    };
    const std::uint32_t cliheader = file.u32(directories + 4 + 8 * clidirectory);
    if (cliheader != 0) {
        readassembly(bytes(file.from(offset(file.u32(offset(cliheader) + 8)))), result);
    }
    return result;
}

}  // namespace

std::optional<image> readimage(std::string_view content) {
    try {
        return readchecked(bytes(content));
    } catch (const std::out_of_range&) {
        return std::nullopt;
    }
}

}  // namespace orvdiag
