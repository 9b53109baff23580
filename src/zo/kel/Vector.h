// Vector<T>: a plain array in a block of the library allocator, usable like a
// standard container, with the byte form u32 count then each element's own
// form. Sizes are 32-bit: a block over 0xFFFFFFFF bytes throws OutOfRange.
// A failed deserialize (DeserializationError) leaves the vector unchanged.
// Copies are deep; a Vector is not safe to mutate from two threads at once.
#pragma once

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "qkdynam_platform.h"
#include "zo/kel/BufferWrapper.h"
#include "zo/kel/ByteForm.h"
#include "zo/kel/DLLMalloc.h"
#include "zo/kel/Exception.h"
#include "zo/kel/SafeInteger.h"
#include "zo/kel/StringBase.h"

namespace zo::kel {
namespace internal {

// Arithmetic elements are stored as their host bytes; any other element
// brings serializationSize(), serialize() and deserialize() of its own.
template <typename T>
inline constexpr bool kIsRawElement = std::is_arithmetic_v<T>;

// The fewest bytes one element's form can take, which bounds a declared
// count by the input left before anything is allocated for it.
template <typename T>
struct MinimumElementForm {
    static constexpr unsigned int kSize = [] {
        if constexpr (kIsRawElement<T>) {
            return static_cast<unsigned int>(sizeof(T));
        } else if constexpr (requires { T::kMinimumSerializationSize; }) {
            return T::kMinimumSerializationSize;
        } else {
            return 1u;
        }
    }();
};

// Every string form starts with its count.
template <typename Char, typename OtherChar, typename WideChar>
struct MinimumElementForm<StringBase<Char, OtherChar, WideChar>> {
    static constexpr unsigned int kSize = byteform::kCountSize;
};

}  // namespace internal

template <typename T>
class Vector {
public:
    using value_type = T;
    using size_type = unsigned int;
    using difference_type = std::ptrdiff_t;
    using reference = T&;
    using const_reference = const T&;
    using pointer = T*;
    using const_pointer = const T*;
    using iterator = T*;
    using const_iterator = const T*;

    // The storage: constructed elements in [begin, end), raw room up to
    // capacityEnd; all null when nothing is allocated.
    struct Impl {
        T* begin = nullptr;
        T* end = nullptr;
        T* capacityEnd = nullptr;

        Impl() noexcept = default;
        // n value-initialised elements in one block of exactly n elements.
        explicit Impl(SafeInteger<unsigned int> n);
        Impl(const Impl&) = delete;
        Impl& operator=(const Impl&) = delete;
        ~Impl();
        void swap(Impl& other) noexcept {
            std::swap(begin, other.begin);
            std::swap(end, other.end);
            std::swap(capacityEnd, other.capacityEnd);
        }
    };

    // Construction. Copies are deep.
    Vector() noexcept = default;
    explicit Vector(SafeInteger<unsigned int> n) : impl_(n) {}
    Vector(std::initializer_list<T> elements);
    Vector(const Vector& other);
    Vector(Vector&& other) noexcept { impl_.swap(other.impl_); }
    Vector& operator=(const Vector& other) {
        if (this != &other) Vector(other).swap(*this);
        return *this;
    }
    Vector& operator=(Vector&& other) noexcept {
        Vector(std::move(other)).swap(*this);
        return *this;
    }
    ~Vector() = default;
    void swap(Vector& other) noexcept { impl_.swap(other.impl_); }

    // Access. Indexes are not checked.
    size_type size() const noexcept { return static_cast<size_type>(impl_.end - impl_.begin); }
    size_type capacity() const noexcept { return static_cast<size_type>(impl_.capacityEnd - impl_.begin); }
    bool empty() const noexcept { return impl_.begin == impl_.end; }
    T* data() noexcept { return impl_.begin; }
    const T* data() const noexcept { return impl_.begin; }
    T& operator[](size_type i) noexcept { return impl_.begin[i]; }
    const T& operator[](size_type i) const noexcept { return impl_.begin[i]; }
    T& front() noexcept { return *impl_.begin; }
    const T& front() const noexcept { return *impl_.begin; }
    T& back() noexcept { return impl_.end[-1]; }
    const T& back() const noexcept { return impl_.end[-1]; }
    iterator begin() noexcept { return impl_.begin; }
    iterator end() noexcept { return impl_.end; }
    const_iterator begin() const noexcept { return impl_.begin; }
    const_iterator end() const noexcept { return impl_.end; }
    const_iterator cbegin() const noexcept { return impl_.begin; }
    const_iterator cend() const noexcept { return impl_.end; }

    // Modification. Growth doubles the capacity; an element that cannot be
    // added (std::bad_alloc, OutOfRange) leaves the vector as it was.
    void push_back(const T& value) { emplace_back(value); }
    void push_back(T&& value) { emplace_back(std::move(value)); }
    template <typename... Args>
    T& emplace_back(Args&&... args) {
        if (impl_.end == impl_.capacityEnd) return emplaceGrowing(std::forward<Args>(args)...);
        ::new (static_cast<void*>(impl_.end)) T(std::forward<Args>(args)...);
        return *impl_.end++;
    }
    void pop_back() noexcept { std::destroy_at(--impl_.end); }
    // Makes room for n elements in all (exactly n when the block must grow).
    void reserve(size_type n);
    // Destroys the elements and keeps the block.
    void clear() noexcept {
        std::destroy(impl_.begin, impl_.end);
        impl_.end = impl_.begin;
    }

    friend bool operator==(const Vector& a, const Vector& b) { return std::ranges::equal(a, b); }

    // Byte form. serializationSize saturates at 0xFFFFFFFF; serialize throws
    // BufferOverflow when the form does not fit before `limit`; deserialize
    // throws DeserializationError on short input. Both advance the cursor
    // only on success.
    unsigned int serializationSize() const noexcept;
    void serialize(unsigned char*& cursor, const unsigned char* limit) const;
    void deserialize(const unsigned char*& cursor, const unsigned char* limit);

private:
    // Raw room for n elements; throws OutOfRange when it is over 32 bits.
    static T* allocate(SafeInteger<unsigned int> n) {
        return static_cast<T*>(DLLMalloc((n * SafeInteger<unsigned int>(sizeof(T))).get()));
    }
    // Moves the elements into a block of `newCapacity` elements. An element
    // made by `make` (nullptr for none) is constructed after them first, so
    // that it may be built from an element of the old block.
    template <typename Make>
    void relocate(size_type newCapacity, Make make);
    template <typename... Args>
    T& emplaceGrowing(Args&&... args);

    Impl impl_;
};

// ---- Storage

template <typename T>
Vector<T>::Impl::Impl(SafeInteger<unsigned int> n) {
    if (n.get() == 0) return;
    T* block = allocate(n);
    try {
        std::uninitialized_value_construct_n(block, n.get());
    } catch (...) {
        DLLFree(block);
        throw;
    }
    begin = block;
    end = capacityEnd = block + n.get();
}

template <typename T>
Vector<T>::Impl::~Impl() {
    std::destroy(begin, end);
    DLLFree(begin);
}

template <typename T>
Vector<T>::Vector(std::initializer_list<T> elements) {
    reserve(SafeInteger<unsigned int>(elements.size()).get());
    for (const T& element : elements) emplace_back(element);
}

template <typename T>
Vector<T>::Vector(const Vector& other) {
    reserve(other.size());
    for (const T& element : other) emplace_back(element);
}

template <typename T>
template <typename Make>
void Vector<T>::relocate(size_type newCapacity, Make make) {
    Impl grown;
    grown.begin = allocate(newCapacity);
    grown.capacityEnd = grown.begin + newCapacity;
    T* const added = grown.begin + size();
    constexpr bool kAdds = !std::is_null_pointer_v<Make>;
    if constexpr (kAdds) {
        try {
            make(added);
        } catch (...) {
            DLLFree(grown.begin);
            throw;
        }
    }
    try {
        if constexpr (std::is_nothrow_move_constructible_v<T>) {
            std::uninitialized_move(impl_.begin, impl_.end, grown.begin);
        } else {
            std::uninitialized_copy(impl_.begin, impl_.end, grown.begin);
        }
    } catch (...) {
        if constexpr (kAdds) std::destroy_at(added);
        DLLFree(grown.begin);
        throw;
    }
    grown.end = added;
    impl_.swap(grown);
}

template <typename T>
void Vector<T>::reserve(size_type n) {
    if (n <= capacity()) return;
    relocate(n, nullptr);
}

template <typename T>
template <typename... Args>
T& Vector<T>::emplaceGrowing(Args&&... args) {
    constexpr size_type kMostElements = 0xFFFFFFFFu / sizeof(T);
    const size_type needed = (SafeInteger<unsigned int>(size()) + 1u).get();
    const size_type doubled = capacity() > kMostElements / 2 ? kMostElements : std::max(2 * capacity(), 4u);
    relocate(std::max(needed, doubled), [&](T* at) { ::new (static_cast<void*>(at)) T(std::forward<Args>(args)...); });
    // relocate left `end` before the new element.
    return *impl_.end++;
}

// ---- Byte form

template <typename T>
unsigned int Vector<T>::serializationSize() const noexcept {
    if constexpr (internal::kIsRawElement<T>) {
        return byteform::SaturatedFormSize(std::size_t{size()} * sizeof(T));
    } else {
        std::size_t total = 0;
        for (const T& element : *this) total += element.serializationSize();
        return byteform::SaturatedFormSize(total);
    }
}

template <typename T>
void Vector<T>::serialize(unsigned char*& cursor, const unsigned char* limit) const {
    unsigned char* write = cursor;
    if (byteform::Room(write, limit) < byteform::kCountSize) byteform::ThrowBufferOverflow();
    byteform::StoreCount(write, size());
    write += byteform::kCountSize;
    if constexpr (internal::kIsRawElement<T>) {
        const std::size_t bytes = std::size_t{size()} * sizeof(T);
        if (byteform::Room(write, limit) < bytes) byteform::ThrowBufferOverflow();
        if (bytes != 0) std::memcpy(write, impl_.begin, bytes);
        write += bytes;
    } else {
        for (const T& element : *this) element.serialize(write, limit);
    }
    cursor = write;
}

template <typename T>
void Vector<T>::deserialize(const unsigned char*& cursor, const unsigned char* limit) {
    const unsigned char* read = cursor;
    if (byteform::Room(read, limit) < byteform::kCountSize) ZO_THROW(exception::DeserializationError);
    const unsigned int count = byteform::LoadCount(read);
    read += byteform::kCountSize;
    if (count > byteform::Room(read, limit) / internal::MinimumElementForm<T>::kSize) {
        ZO_THROW(exception::DeserializationError);
    }
    Impl fresh;
    if constexpr (internal::kIsRawElement<T>) {
        // Copied into raw room: value-initialising first would write every byte twice.
        if (count != 0) {
            fresh.begin = allocate(count);
            fresh.end = fresh.capacityEnd = fresh.begin + count;
            std::memcpy(fresh.begin, read, std::size_t{count} * sizeof(T));
        }
        read += std::size_t{count} * sizeof(T);
    } else {
        Impl elements(count);
        fresh.swap(elements);
        for (T* element = fresh.begin; element != fresh.end; ++element) element->deserialize(read, limit);
    }
    impl_.swap(fresh);
    cursor = read;
}

// Compiled once, in the library.
extern template class QKDYNAM_API Vector<unsigned char>;
extern template class QKDYNAM_API Vector<unsigned short>;
extern template class QKDYNAM_API Vector<unsigned int>;
extern template class QKDYNAM_API Vector<double>;
extern template class QKDYNAM_API Vector<BufferWrapper>;
extern template class QKDYNAM_API Vector<NarrowString>;
extern template class QKDYNAM_API Vector<WideString>;

}  // namespace zo::kel
