// The binary interface as other binaries have it in their code: identifiers, result codes, the slots of the interfaces
// and how a slot is called.
//
// Frozen: no header of the runtime is used here, deliberately, so that a change of the runtime's own headers cannot
// change what modules are held to. Hosts and components use those headers, not this one.
#pragma once

#include <cstdint>
#include <string>

namespace Frozen
{
struct Identifier
{
    std::uint32_t word;
    std::uint16_t half[2];
    std::uint8_t bytes[8];

    bool operator==(const Identifier&) const = default;
};

// From the 8-4-4-4-12 text form.
inline Identifier FromText(const std::string& text)
{
    const auto number = [&](std::size_t at, std::size_t digits)
    {
        return std::stoull(text.substr(at, digits), nullptr, 16);
    };
    Identifier id{static_cast<std::uint32_t>(number(0, 8)),
                  {static_cast<std::uint16_t>(number(9, 4)), static_cast<std::uint16_t>(number(14, 4))},
                  {}};
    for (std::size_t i = 0; i < 8; ++i)
        id.bytes[i] = static_cast<std::uint8_t>(number(i < 2 ? 19 + i * 2 : 20 + i * 2, 2));
    return id;
}

inline const Identifier kUnknown = FromText("FE15F6EB-1E69-4568-9111-3FB8FACBAAF9");
inline const Identifier kConnectionClass = FromText("B12057F9-F564-452B-AFDE-28B3AE4D870C");
inline const Identifier kConnection = FromText("0AEC337B-D290-4817-8755-C5A3BCE7C85D");
inline const Identifier kCommand = FromText("CF37A1A1-DC46-4F85-918D-8272B5D10F05");
inline const Identifier kRecordSet = FromText("5B3C3780-967F-436C-9D74-110AC2773357");
// Exported, but answered by nothing in the module.
inline const Identifier kThread = FromText("A6579EB2-C30D-4D3B-9A15-B5C90EC5DFC8");

constexpr std::int32_t kOk = 0;
constexpr std::int32_t kFalse = 1;
constexpr auto kBufferTooSmall = static_cast<std::int32_t>(0x80000002u);
constexpr auto kFail = static_cast<std::int32_t>(0x80000008u);
constexpr auto kNoInterface = static_cast<std::int32_t>(0x81000001u);
constexpr auto kPointer = static_cast<std::int32_t>(0x81000002u);
constexpr auto kStep = static_cast<std::int32_t>(0x81040001u);
constexpr auto kNullValue = static_cast<std::int32_t>(0x81040002u);

// clang-format off
// Slots 0 to 2 of every interface.
enum RootSlot
{
    kAddRef, kRelease, kQueryInterface,
    kRootEnd
};

enum ConnectionSlot
{
    kConnect = 3, kDisConnect, kBeginTrans, kCommitTrans, kRollbackTrans,
    kExecuteText, kOpenText, kCreateCommand, kGetLastInsertID,
    kConnectionEnd
};

enum CommandSlot
{
    kPrepareSQL = 3,
    kBindInt, kBindUnsigned, kBindInt64, kBindDouble, kBindText, kBindMoment, kBindBlob,
    kExecute, kOpen,
    kCommandEnd
};

enum RecordSetSlot
{
    kGetFieldCount = 3, kReset, kNext,
    kIntByName, kIntByIndex, kUnsignedByName, kUnsignedByIndex, kInt64ByName, kInt64ByIndex,
    kDoubleByName, kDoubleByIndex, kTextByName, kTextByIndex, kMomentByName, kMomentByIndex,
    kBlobByName, kBlobByIndex,
    kIsEof,
    kRecordSetEnd
};
// clang-format on

// Calls the function in `slot` of the table that `object` begins with.
template <class Result, class... Arguments>
Result Call(void* object, int slot, Arguments... arguments)
{
    using Function = Result (*)(void*, Arguments...);
    return reinterpret_cast<Function>((*static_cast<void***>(object))[slot])(object, arguments...);
}

inline std::int32_t Query(void* object, const Identifier& id, void** out)
{
    return Call<std::int32_t>(object, kQueryInterface, &id, out);
}

inline std::uint32_t AddRef(void* object)
{
    return Call<std::uint32_t>(object, kAddRef);
}

inline std::uint32_t Release(void* object)
{
    return Call<std::uint32_t>(object, kRelease);
}
} // namespace Frozen
