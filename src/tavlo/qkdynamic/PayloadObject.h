// The reference counting and interface lookup shared by every payload
// object. An object is born with one reference (its creator's) and deletes
// itself at the Release that brings the count to zero. `Answered` lists the
// identifiers QueryInterface accepts; each is answered with the object seen
// as `Interface`. Objects live in the small-block cache: they come and go in
// bursts.
#pragma once

#include <cstdint>

#include "tavlo/qkstatic/ComInterfaces.h"
#include "zo/kel/SmallBlockCache.h"
#include "zo/kel/osdep/AtomicInt.h"

namespace internal {

template <class Interface, const _GUID&... Answered>
class PayloadObject : public Interface, public zo::kel::internal::SmallBlockObject {
public:
    std::int32_t QueryInterface(const _GUID& iid, void** object) override {
        if (((iid == Answered) || ...)) {
            *object = static_cast<Interface*>(this);
            AddRef();
            return kStatusOk;
        }
        *object = nullptr;
        return kNoInterface;
    }

    std::int32_t AddRef() override { return referenceCount_.increment(); }

    std::int32_t Release() override {
        const std::int32_t count = referenceCount_.decrement();
        if (count == 0) delete this;
        return count;
    }

    virtual ~PayloadObject() = default;

private:
    zo::kel::osdep::AtomicInt referenceCount_{1};
};

}  // namespace internal
