// The module's text conversions on arbitrary texts, codes and numbers, each
// writing into a heap buffer of exactly the size it is given (any size its
// callers use), so that one byte too many is caught. Texts the controller's
// libraries hand out fill their fields to the last byte, unterminated; the
// label and card-name builders read their records from the rest of the
// input (see platform_bytes.h).
#include "platform_bytes.h"

#include "adapter_rows.h"
#include "adapters.h"
#include "inventory.h"
#include "persistent_memory.h"
#include "raid_rows.h"
#include "raid_text.h"
#include "text.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

namespace {

// A buffer of exactly `size` bytes on the heap.
struct Buffer {
    explicit Buffer(size_t size) : bytes(new char[size]), size(size) { memset(bytes.get(), 'x', size); }
    std::unique_ptr<char[]> bytes;
    size_t size;
    char *get() const { return bytes.get(); }
    int32_t size32() const { return static_cast<int32_t>(size); }
};

// A field of `capacity` bytes filled from the input, no terminator promised.
Buffer field(FuzzedDataProvider &input, size_t capacity)
{
    Buffer buffer(capacity);
    const std::vector<char> bytes = input.ConsumeBytes<char>(capacity);
    memset(buffer.get(), 0, capacity);
    if (!bytes.empty())
        memcpy(buffer.get(), bytes.data(), bytes.size());
    if (input.ConsumeBool() && bytes.size() < capacity) // a field full to its last byte
        memset(buffer.get() + bytes.size(), 'A', capacity - bytes.size());
    return buffer;
}

// A terminated text in a block exactly its size.
Buffer text(FuzzedDataProvider &input)
{
    const std::string value = input.ConsumeRandomLengthString(300);
    Buffer buffer(value.size() + 1);
    memcpy(buffer.get(), value.c_str(), value.size() + 1);
    return buffer;
}

size_t fieldSize(FuzzedDataProvider &input)
{
    return input.ConsumeIntegralInRange<size_t>(0, 300);
}

// The rest of the input answers the platform calls of a label builder.
class PlatformAnswers {
public:
    explicit PlatformAnswers(FuzzedDataProvider &input) : bytes_(input.ConsumeRemainingBytes<uint8_t>())
    {
        orv3::fuzz::servePlatformBytes(bytes_.data(), bytes_.size());
    }

private:
    std::vector<uint8_t> bytes_;
};

void decimal(FuzzedDataProvider &input)
{
    const Buffer value = text(input);
    cpuVpdDecimal_parse(value.get());
    systemCPUVpdTable_entry_t row{};
    const int flags = input.ConsumeIntegral<int>();
    cpuVpdSpeed_conv(flags, &row, value.get());
    cpuVpdCores_conv(flags, &row, value.get());
    cpuVpdThreads_conv(flags, &row, value.get());
    cpuVpdVoltage_conv(flags, &row, value.get());
    cpuVpdDataWidth_conv(flags, &row, value.get());
}

void trimCopy(FuzzedDataProvider &input)
{
    Buffer destination(fieldSize(input));
    const Buffer source = field(input, fieldSize(input));
    trimCopyStr(destination.get(), source.get(), destination.size32(), source.size32());
}

void trimWhiteSpace(FuzzedDataProvider &input)
{
    const Buffer source = text(input);
    Buffer destination(source.size);
    strtrim(destination.get(), source.get());
    const Buffer unterminated = field(input, fieldSize(input));
    Buffer trimmed(input.ConsumeIntegralInRange<size_t>(1, 300));
    orv3::trimInto(trimmed.get(), trimmed.size, unterminated.get(), unterminated.size);
}

void capacity(FuzzedDataProvider &input)
{
    Buffer buffer(input.ConsumeIntegralInRange<size_t>(0, 256));
    const auto low = input.ConsumeIntegral<uint32_t>();
    ConvertCapacity(low, input.ConsumeIntegral<uint32_t>(), buffer.get(), buffer.size32());
}

constexpr int (*kCodeTexts[])(int32_t, char *, int32_t) = {
    getControllerOrDiskHealthString,
    getControllerCacheMdlStatusString,
    getControllerBatBCKStatusString,
    getControllerBatBCKTypeString,
    getDriveDiskTypeString,
    getDriveMediaTypeString,
    getDriveDiskFormatString,
    getDriveSpeedString,
    getVolumeStateString,
};

void codeText(FuzzedDataProvider &input)
{
    Buffer buffer(input.ConsumeIntegralInRange<size_t>(0, 256));
    const auto code = input.ConsumeIntegral<int32_t>();
    input.PickValueInArray(kCodeTexts)(code, buffer.get(), buffer.size32());
}

void driveState(FuzzedDataProvider &input)
{
    Buffer buffer(input.ConsumeIntegralInRange<size_t>(0, 256));
    const auto state = input.ConsumeIntegral<int32_t>();
    const auto dedicated = input.ConsumeIntegral<int32_t>();
    const auto readyToRemove = input.ConsumeIntegral<int32_t>();
    getDriveStateString(state, buffer.get(), buffer.size32(), dedicated, readyToRemove,
                        input.ConsumeIntegral<int32_t>());
}

constexpr void (*kLabels[])(uint32_t, char *, int32_t) = {fetchCtrlProdSlot, fetchDiskProdSlot, fetchArrayInfo,
                                                          fetchVolumeInfo};

void label(FuzzedDataProvider &input)
{
    Buffer buffer(input.ConsumeIntegralInRange<size_t>(0, 256));
    const auto build = input.PickValueInArray(kLabels);
    const auto id = input.ConsumeIntegral<uint32_t>();
    PlatformAnswers answers(input);
    build(id, buffer.get(), buffer.size32());
}

void adapterName(FuzzedDataProvider &input)
{
    inventory_db_adapter_t adapter{};
    const std::vector<uint8_t> record = input.ConsumeBytes<uint8_t>(sizeof adapter);
    if (!record.empty())
        memcpy(&adapter, record.data(), record.size());
    Buffer name(ADAPTERS_ADAPTER_NAME_SIZE);
    get_pci_AdapterName_byAdapterInfo(&adapter, name.get());
}

void cardName(FuzzedDataProvider &input)
{
    Buffer name(sizeof(inventory_db_func_key_t::cardName));
    const auto funcKey = input.ConsumeIntegral<uint32_t>();
    const auto oobSupported = input.ConsumeIntegral<uint8_t>();
    PlatformAnswers answers(input);
    get_pci_CardName_byFunc(funcKey, name.get(), oobSupported);
}

void functionType(FuzzedDataProvider &input)
{
    Buffer type(ADAPTERS_FUNC_TYPE_TEXT_SIZE);
    get_pci_func_type_string(input.ConsumeIntegral<uint32_t>(), type.get());
}

void protocolWords(FuzzedDataProvider &input)
{
    Buffer words(input.ConsumeIntegralInRange<size_t>(1, 65));
    const auto ethernet = input.ConsumeIntegral<uint8_t>();
    const auto fcoeFc = input.ConsumeIntegral<uint8_t>();
    orv3::joinProtocolWords(words.get(), words.size, ethernet, fcoeFc, input.ConsumeIntegral<uint8_t>());
}

void copiesAndJoins(FuzzedDataProvider &input)
{
    Buffer destination(input.ConsumeIntegralInRange<size_t>(0, 300));
    const Buffer first = field(input, fieldSize(input));
    const Buffer second = field(input, fieldSize(input));
    orv3::copyText(destination.get(), destination.size, first.get(), first.size);
    orv3::joinTexts(destination.get(), destination.size, first.get(), first.size, second.get(), second.size);
    Buffer speed(input.ConsumeIntegralInRange<size_t>(1, 64));
    orv3::formatFanSpeed(speed.get(), speed.size, input.ConsumeIntegral<int32_t>());
}

// The RAID tables' list columns: pieces appended while they fit.
void listText(FuzzedDataProvider &input)
{
    Buffer list(input.ConsumeIntegralInRange<size_t>(1, 300));
    memset(list.get(), 0, list.size);
    uint32_t length = 0;
    orv3::ListText pieces(list.get(), list.size, length);
    for (int n = input.ConsumeIntegralInRange(0, 16); n > 0; --n) {
        const Buffer piece = text(input);
        if (input.ConsumeBool())
            pieces.append(piece.get(), input.ConsumeIntegralInRange<size_t>(0, 400));
        else
            pieces.append(piece.get());
    }
}

constexpr void (*kConversions[])(FuzzedDataProvider &) = {
    decimal,     trimCopy, trimWhiteSpace, capacity,      codeText,       driveState, label,
    adapterName, cardName, functionType,   protocolWords, copiesAndJoins, listText,
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    orv3::fuzz::silenceTraceLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    FuzzedDataProvider input(data + 1, size - 1);
    kConversions[data[0] % std::size(kConversions)](input);
    return 0;
}
