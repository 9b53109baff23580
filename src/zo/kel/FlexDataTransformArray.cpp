// The element conversion of FlexData arrays: count scalars of one numeric
// kind and byte order into another. Every pair of the ten numeric kinds is
// one entry of a table built at compile time, indexed by target, source and
// the two "swap" flags, so the hot loop of each pair is a straight loop over
// fixed types that the compiler can vectorise.
//
// Rules, for every pair:
//   - the same kind in the same order is one memcpy, in two orders a swap
//     of each element's bytes;
//   - integer to integer: sign- or zero-extended, then cut to the target's
//     width (two's-complement wrap), as the FlexData getters do;
//   - integer or float to float: the nearest value (IEEE rounding);
//   - float to integer: truncated toward zero, saturated at the target's
//     limits, and NaN gives 0; no conversion is left undefined;
//   - a byte order other than the host's is swapped on load or on store.
// Booleans are copied by CopyBooleanArray; any other kind is refused.
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <tuple>
#include <type_traits>
#include <utility>

#include "zo/kel/Exception.h"
#include "zo/kel/FlexData.h"

namespace zo::kel {

namespace {

// The ten numeric kinds, in the order of kNumericCodes.
using NumericTypes = std::tuple<std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t, std::uint32_t,
                                std::int64_t, std::uint64_t, float, double>;
constexpr fd::FlexType kNumericCodes[] = {fd::kInt8,  fd::kUInt8,  fd::kInt16, fd::kUInt16,  fd::kInt32,
                                          fd::kUInt32, fd::kInt64, fd::kUInt64, fd::kFloat32, fd::kFloat64};
constexpr std::size_t kKinds = std::size(kNumericCodes);
static_assert(std::tuple_size_v<NumericTypes> == kKinds);

template <std::size_t Bytes>
using Bits = std::conditional_t<Bytes == 1, std::uint8_t,
                                std::conditional_t<Bytes == 2, std::uint16_t,
                                                   std::conditional_t<Bytes == 4, std::uint32_t, std::uint64_t>>>;

template <typename U>
constexpr U SwapBytes(U bits) noexcept {
    if constexpr (sizeof(U) == 1) return bits;
    else if constexpr (sizeof(U) == 2) return __builtin_bswap16(bits);
    else if constexpr (sizeof(U) == 4) return __builtin_bswap32(bits);
    else return __builtin_bswap64(bits);
}

template <typename T, bool Swap>
inline T Load(const unsigned char* p) noexcept {
    Bits<sizeof(T)> bits;
    std::memcpy(&bits, p, sizeof bits);
    if constexpr (Swap) bits = SwapBytes(bits);
    return std::bit_cast<T>(bits);
}

template <typename T, bool Swap>
inline void Store(unsigned char* p, T value) noexcept {
    auto bits = std::bit_cast<Bits<sizeof(T)>>(value);
    if constexpr (Swap) bits = SwapBytes(bits);
    std::memcpy(p, &bits, sizeof bits);
}

// Truncation toward zero, saturating; NaN is 0. The bounds are powers of
// two, exact in every floating type.
template <typename D, typename S>
inline D FloatToInteger(S value) noexcept {
    constexpr S lowest = static_cast<S>(std::numeric_limits<D>::min());
    constexpr S pastHighest = static_cast<S>(std::numeric_limits<D>::max() / 2 + 1) * S{2};
    if (value != value) return 0;
    if (value < lowest) return std::numeric_limits<D>::min();
    if (value >= pastHighest) return std::numeric_limits<D>::max();
    return static_cast<D>(value);
}

template <typename D, typename S>
inline D Convert(S value) noexcept {
    if constexpr (std::is_integral_v<D> && std::is_floating_point_v<S>) return FloatToInteger<D>(value);
    else return static_cast<D>(value);
}

template <typename D, typename S, bool SwapIn, bool SwapOut>
void ConvertLoop(unsigned int count, const unsigned char* src, unsigned char* dst) {
    if constexpr (std::is_same_v<D, S> && SwapIn == SwapOut) {
        std::memcpy(dst, src, std::size_t{count} * sizeof(S));
    } else if constexpr (std::is_same_v<D, S>) {
        // One kind, two orders: the bits are swapped, never read as values.
        using U = Bits<sizeof(S)>;
        for (std::size_t i = 0; i < count; ++i) Store<U, true>(dst + i * sizeof(U), Load<U, false>(src + i * sizeof(U)));
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            Store<D, SwapOut>(dst + i * sizeof(D), Convert<D>(Load<S, SwapIn>(src + i * sizeof(S))));
        }
    }
}

using Loop = void (*)(unsigned int, const unsigned char*, unsigned char*);

// kLoops[target][source][swap in * 2 + swap out].
template <std::size_t D, std::size_t S>
constexpr std::array<Loop, 4> LoopsOf() {
    using Dst = std::tuple_element_t<D, NumericTypes>;
    using Src = std::tuple_element_t<S, NumericTypes>;
    return {&ConvertLoop<Dst, Src, false, false>, &ConvertLoop<Dst, Src, false, true>,
            &ConvertLoop<Dst, Src, true, false>, &ConvertLoop<Dst, Src, true, true>};
}

template <std::size_t D, std::size_t... S>
constexpr std::array<std::array<Loop, 4>, kKinds> RowOf(std::index_sequence<S...>) {
    return {LoopsOf<D, S>()...};
}

template <std::size_t... D>
constexpr auto TableOf(std::index_sequence<D...>) {
    return std::array<std::array<std::array<Loop, 4>, kKinds>, kKinds>{RowOf<D>(std::make_index_sequence<kKinds>())...};
}

constexpr auto kLoops = TableOf(std::make_index_sequence<kKinds>());

std::size_t KindIndex(fd::FlexType type) {
    for (std::size_t i = 0; i < kKinds; ++i) {
        if (kNumericCodes[i] == type) return i;
    }
    ZO_THROW(exception::InvalidArgument);
}

}  // namespace

bool FlexData::IsNumericKind(fd::FlexType type) noexcept {
    for (const fd::FlexType code : kNumericCodes) {
        if (code == type) return true;
    }
    return false;
}

void FlexData::TransformArray(unsigned int count, fd::FlexType srcType, fd::TAEndian srcEndian, const void* src,
                              fd::FlexType dstType, fd::TAEndian dstEndian, void* dst) {
    const std::size_t to = KindIndex(dstType), from = KindIndex(srcType);
    if (count == 0) return;
    const unsigned int swaps = (srcEndian != fd::kHostEndian ? 2u : 0u) | (dstEndian != fd::kHostEndian ? 1u : 0u);
    kLoops[to][from][swaps](count, static_cast<const unsigned char*>(src), static_cast<unsigned char*>(dst));
}

void FlexData::CopyBooleanArray(unsigned int count, const void* src, void* dst, unsigned char trueByte) noexcept {
    const auto* in = static_cast<const unsigned char*>(src);
    auto* out = static_cast<unsigned char*>(dst);
    for (std::size_t i = 0; i < count; ++i) out[i] = in[i] != 0 ? trueByte : 0;
}

}  // namespace zo::kel
