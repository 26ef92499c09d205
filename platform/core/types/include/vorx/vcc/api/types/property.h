#ifndef VORX_VCC_API_TYPES_PROPERTY_H
#define VORX_VCC_API_TYPES_PROPERTY_H

// Declares one value member of an entity description with its getter and
// setter: VCC_PROPERTY(uint16_t, ServiceId) gives GetServiceId(), SetServiceId()
// and the member ServiceId_. Descriptions are plain data filled by the core
// from the deployment; the accessors keep the core's calling convention.
#define VCC_PROPERTY(Type, Name)        \
  public:                               \
    const Type& Get##Name() const {     \
        return Name##_;                 \
    }                                   \
    void Set##Name(const Type& value) { \
        Name##_ = value;                \
    }                                   \
                                        \
  private:                              \
    Type Name##_ {}

#endif
