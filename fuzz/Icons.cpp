// The bytes of a kept icon. Their digest keeps a fuzzer out, so it is put right behind what the fuzzer makes up.

#include <QCryptographicHash>
#include <QImageReader>

#include <halyon/tools/CHynIconHelper2.h>

#include "Input.h"

using namespace Halyon;
using HalyonFuzz::Hold;

namespace
{
std::string Saved(OpaqueIconRef* icon)
{
    unsigned char* bytes = nullptr;
    const std::uint32_t size = CHynIconHelper2::SaveIcon(icon, &bytes);
    Hold(size != 0 && bytes != nullptr, "an icon can be saved");
    const std::unique_ptr<unsigned char[]> owner(bytes);
    return {reinterpret_cast<const char*>(bytes), size};
}

OpaqueIconRef* Load(std::string bytes)
{
    return CHynIconHelper2::LoadIcon(reinterpret_cast<unsigned char*>(bytes.data()),
                                     static_cast<std::uint32_t>(bytes.size()));
}

void Try(const std::string& bytes)
{
    OpaqueIconRef* icon = Load(bytes);
    if (icon == nullptr)
        return;
    const std::string saved = Saved(icon);
    OpaqueIconRef* again = Load(saved);
    Hold(again != nullptr && Saved(again) == saved, "an icon that was saved loads as itself");
    CHynIconHelper2::DestroyIcon(again);
    CHynIconHelper2::DestroyIcon(icon);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QImageReader::setAllocationLimit(16);
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    Try(bytes);
    const QByteArray digest = QCryptographicHash::hash(QByteArrayView(bytes.data(), static_cast<qsizetype>(size)),
                                                       QCryptographicHash::Sha256);
    Try(bytes + std::string(digest.data(), static_cast<std::size_t>(digest.size())));
    return 0;
}
