// The host-variant payload's byte form over arbitrary bytes: a refused input
// leaves the cursor where it was; an accepted one writes back exactly the
// bytes it consumed and reads again to an equal payload.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "FuzzCheck.h"
#include "tavlo/qkdynamic/PayloadFactories.h"
#include "tavlo/qkstatic/PayloadRef.h"
#include "zo/kel/Exception.h"

using fuzzcheck::Require;
using internal::PayloadRef;

namespace {

PayloadRef<IVarDataGXVariant> Deserialize(const unsigned char*& cursor, const unsigned char* end) {
    auto guts = PayloadRef<IVarDataGuts>::Adopt(DeserializeVarDataGXVariant(cursor, end));
    return PayloadRef<IVarDataGXVariant>(guts.get());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzzcheck::ExactInput input(data, size);
    const unsigned char* cursor = input.begin();
    PayloadRef<IVarDataGXVariant> variant;
    try {
        variant = Deserialize(cursor, input.end());
    } catch (const zo::kel::exception::DeserializationError&) {
        Require(cursor == input.begin());
        return 0;
    }
    Require(variant && cursor <= input.end());
    std::vector<unsigned char> encoded(variant->serializationSize());
    unsigned char* write = encoded.data();
    variant->serialize(write, encoded.data() + encoded.size());
    Require(write == encoded.data() + encoded.size() && encoded == input.Consumed(cursor));

    const unsigned char* reread = encoded.data();
    const PayloadRef<IVarDataGXVariant> again = Deserialize(reread, encoded.data() + encoded.size());
    Require(reread == encoded.data() + encoded.size() && again->Compare(variant.get()) == 0);
    return 0;
}
