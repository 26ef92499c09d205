#ifndef VORX_VCC_PAYLOAD_H
#define VORX_VCC_PAYLOAD_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <typeinfo>
#include <utility>
#include <vector>

#include "vorx/vcc/export.h"

namespace vorx::vcc {

// How a driver wants data handed over. Transports between processes need bytes; the in-process
// binding can also pass the objects themselves, which saves encoding and decoding.
enum class PayloadMode : uint8_t {
    kBytes = 0,    // CDR bytes made by the core's encoders
    kObjects = 1,  // the sender's object, shared read-only with every receiver
};

// The data of one request, reply or event sample: either encoded bytes or a shared immutable
// object, or nothing. Copies are cheap (both forms are shared, never copied), so one sample can be
// handed to many receivers. Thread-safe for concurrent readers.
class VCC_EXPORT Payload {
  public:
    Payload() = default;

    static Payload FromBytes(std::vector<uint8_t> bytes);
    // Takes shared ownership of `object`; receivers read it with GetObject<T>().
    template <class T>
    static Payload FromObject(std::shared_ptr<const T> object) {
        Payload payload;
        payload.type_ = &typeid(T);
        payload.object_ = std::move(object);
        return payload;
    }

    bool IsEmpty() const { return !bytes_ && !object_; }
    bool HasBytes() const { return static_cast<bool>(bytes_); }
    bool HasObject() const { return static_cast<bool>(object_); }

    // The bytes; an empty vector when the payload holds none.
    const std::vector<uint8_t>& GetBytes() const;
    // The object when the payload holds one of exactly type T, else nullptr. Types compare by
    // their type_info, which also works across shared libraries.
    template <class T>
    const T* GetObject() const {
        if (!object_ || type_ == nullptr || *type_ != typeid(T)) {
            return nullptr;
        }
        return static_cast<const T*>(object_.get());
    }
    // Size of the bytes; 0 for an object or an empty payload.
    size_t ByteSize() const { return bytes_ ? bytes_->size() : 0; }

  private:
    std::shared_ptr<const std::vector<uint8_t>> bytes_;
    std::shared_ptr<const void> object_;
    const std::type_info* type_{nullptr};
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_PAYLOAD_H
