#include "tools/orvdiag/image.h"

#include <windows.h>

#include <wincrypt.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>

namespace orvdiag {

namespace {

constexpr WORD ownmachine = is64bit ? IMAGE_FILE_MACHINE_AMD64 : IMAGE_FILE_MACHINE_I386;

struct releaseprovider {
    void operator()(void* context) const { CryptReleaseContext(reinterpret_cast<HCRYPTPROV>(context), 0); }
};
struct destroyhash {
    void operator()(void* hash) const { CryptDestroyHash(reinterpret_cast<HCRYPTHASH>(hash)); }
};
using provider = std::unique_ptr<void, releaseprovider>;
using hash = std::unique_ptr<void, destroyhash>;

// Copies a structure from an offset; false if it extends beyond the end of the file.
template <class Part>
bool take(std::string_view file, std::size_t offset, Part& part) {
    if (offset > file.size() || file.size() - offset < sizeof part) {
        return false;
    }
    std::memcpy(&part, file.data() + offset, sizeof part);
    return true;
}

// The headers of 32-bit and 64-bit DLLs differ from the middle of the optional header on.
template <class Headers>
std::optional<image> read(std::string_view file, std::size_t start) {
    Headers headers;
    if (!take(file, start, headers)) {
        return std::nullopt;
    }
    const auto& directories = headers.OptionalHeader.DataDirectory;
    image result = {};
    result.managed = directories[IMAGE_DIRECTORY_ENTRY_COM_DESCRIPTOR].VirtualAddress != 0;
    // An assembly for any processor has the headers of a 32-bit file.
    result.fits = headers.FileHeader.Machine == ownmachine ||
                  (result.managed && headers.FileHeader.Machine == IMAGE_FILE_MACHINE_I386);
    std::size_t offset = start + offsetof(Headers, OptionalHeader) + headers.FileHeader.SizeOfOptionalHeader;
    const std::size_t end = offset + headers.FileHeader.NumberOfSections * sizeof(IMAGE_SECTION_HEADER);
    result.bytes = end;
    for (IMAGE_SECTION_HEADER section; offset < end && take(file, offset, section); offset += sizeof section) {
        result.bytes = std::max<std::uint64_t>(
            result.bytes, static_cast<std::uint64_t>(section.PointerToRawData) + section.SizeOfRawData);
    }
    // The signature's "address" is an offset in the file, from which on the file is padded and signed.
    const IMAGE_DATA_DIRECTORY& certificates = directories[IMAGE_DIRECTORY_ENTRY_SECURITY];
    result.issigned = certificates.VirtualAddress != 0;
    const std::size_t signature =
        result.issigned ? std::min<std::size_t>(certificates.VirtualAddress, file.size()) : file.size();
    result.bytes = std::max<std::uint64_t>(result.bytes,
                                           static_cast<std::uint64_t>(certificates.VirtualAddress) + certificates.Size);
    const std::size_t checksum = start + offsetof(Headers, OptionalHeader.CheckSum);
    const std::size_t entry =
        start + offsetof(Headers, OptionalHeader.DataDirectory) + IMAGE_DIRECTORY_ENTRY_SECURITY * sizeof certificates;
    result.content = std::string(file.substr(0, signature)) + std::string((8 - signature % 8) % 8, '\0');
    result.content.erase(std::min(entry, result.content.size()), sizeof certificates);
    result.content.erase(std::min(checksum, result.content.size()), sizeof headers.OptionalHeader.CheckSum);
    result.content.erase(start + offsetof(Headers, FileHeader.TimeDateStamp), sizeof headers.FileHeader.TimeDateStamp);
    return result;
}

}  // namespace

std::optional<image> readimage(std::string_view file) {
    IMAGE_DOS_HEADER dos;
    IMAGE_NT_HEADERS32 headers;
    if (!take(file, 0, dos) || dos.e_magic != IMAGE_DOS_SIGNATURE ||
        !take(file, static_cast<std::size_t>(dos.e_lfanew), headers) || headers.Signature != IMAGE_NT_SIGNATURE ||
        (headers.FileHeader.Characteristics & IMAGE_FILE_DLL) == 0) {
        return std::nullopt;
    }
    const auto start = static_cast<std::size_t>(dos.e_lfanew);
    return headers.OptionalHeader.Magic == IMAGE_NT_OPTIONAL_HDR64_MAGIC ? read<IMAGE_NT_HEADERS64>(file, start)
                                                                         : read<IMAGE_NT_HEADERS32>(file, start);
}

std::string sha256(std::string_view bytes) {
    // Not by bcrypt.dll: Windows would take a file of that name from this program's own folder.
    HCRYPTPROV opened = 0;
    CryptAcquireContextW(&opened, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT);
    const provider context(reinterpret_cast<void*>(opened));
    HCRYPTHASH created = 0;
    CryptCreateHash(opened, CALG_SHA_256, 0, 0, &created);
    const hash owner(reinterpret_cast<void*>(created));
    BYTE digest[32];
    DWORD size = sizeof digest;
    std::string text;
    if (CryptHashData(created, reinterpret_cast<const BYTE*>(bytes.data()), static_cast<DWORD>(bytes.size()), 0) &&
        CryptGetHashParam(created, HP_HASHVAL, digest, &size, 0)) {
        static constexpr char digits[] = "0123456789abcdef";
        for (const BYTE byte : digest) {
            text += {digits[byte >> 4], digits[byte & 15]};
        }
    }
    return text;
}

std::string fileversion(std::string_view file) {
    // Read from the bytes, because version.dll, too, would be taken from this program's own folder. The name of the
    // resource's first block ends two bytes before its data.
    constexpr std::wstring_view name(L"VS_VERSION_INFO\0", 16);
    const std::string_view key(reinterpret_cast<const char*>(name.data()), name.size() * sizeof(wchar_t));
    VS_FIXEDFILEINFO fixed;
    for (std::size_t at = file.find(key); at != std::string_view::npos; at = file.find(key, at + 1)) {
        if (take(file, at + key.size() + 2, fixed) && fixed.dwSignature == VS_FFI_SIGNATURE) {
            return std::to_string(HIWORD(fixed.dwFileVersionMS)) + "." + std::to_string(LOWORD(fixed.dwFileVersionMS)) +
                   "." + std::to_string(HIWORD(fixed.dwFileVersionLS)) + "." +
                   std::to_string(LOWORD(fixed.dwFileVersionLS));
        }
    }
    return std::string();
}

}  // namespace orvdiag
