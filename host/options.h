// Named options. Their values are shared and copied on write.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "host/color.h"
#include "host/export.h"
#include "host/object.h"

class VT_Renderer_Data;

using VT_String = std::string;

// Functions that a renderer publishes as option values; the host calls them to set the depth test and depth writing.
using VT_Bool_Setter = void (*)(VT_Renderer_Data& renderer, bool value);
using VT_Int_Setter = std::int32_t (*)(VT_Renderer_Data& renderer, const std::int32_t* value);

// The value of a pointer option: none, a shared object, or a setter.
using VT_Pointer = std::variant<std::nullptr_t, VT_Reference<VT_Counted>, VT_Bool_Setter, VT_Int_Setter>;

using VT_Option_Content = std::variant<bool, std::int32_t, VT_Int_RGB, VT_Pointer>;

class VORNA_API VT_Option_Value final : public VT_Counted {
public:
    explicit VT_Option_Value(VT_Option_Content initial) : content(std::move(initial)) {}
    VT_Counted* clone() const override { return new VT_Option_Value(*this); }

    VT_Option_Content content;
};

class VORNA_API VT_Option {
public:
    // scope: a code of the host, which modules pass on unread.
    VT_Option(VT_String name, std::int32_t scope, VT_Option_Content initial)
        : name_(std::move(name)), scope_(scope), value_(new VT_Option_Value(std::move(initial))), carried_(value_->serial()) {}

    const VT_String& name() const noexcept { return name_; }
    std::int32_t scope() const noexcept { return scope_; }
    const VT_Reference<VT_Option_Value>& value() const noexcept { return value_; }

    // A value that is shared is cloned first. Throws std::bad_alloc.
    void set(VT_Option_Content content) { vorna::make_unique(value_).content = std::move(content); }
    // Shares the given value.
    void set_value(VT_Reference<VT_Option_Value> value) noexcept { value_ = std::move(value); }

    // The value, or false, 0 or black when the option is of another kind.
    bool as_bool() const noexcept { return get_or(false); }
    std::int32_t as_int() const noexcept { return get_or(std::int32_t{0}); }
    VT_Int_RGB as_rgb() const noexcept { return get_or(VT_Int_RGB{}); }
    // The shared object of a pointer option; null when it has none or one of another type.
    template <class Object> Object* as_object() const noexcept {
        const auto* pointer = std::get_if<VT_Pointer>(&value_->content);
        const auto* object = pointer ? std::get_if<VT_Reference<VT_Counted>>(pointer) : nullptr;
        return object ? dynamic_cast<Object*>(object->get()) : nullptr;
    }
    template <class Setter> Setter as_setter() const noexcept {
        const auto* pointer = std::get_if<VT_Pointer>(&value_->content);
        const auto* setter = pointer ? std::get_if<Setter>(pointer) : nullptr;
        return setter ? *setter : nullptr;
    }

    // Whether the value has changed since the last call.
    bool take_change() noexcept { return std::exchange(carried_, value_->serial()) != value_->serial(); }

private:
    template <class Kind> Kind get_or(Kind otherwise) const noexcept {
        const auto* kind = std::get_if<Kind>(&value_->content);
        return kind ? *kind : otherwise;
    }

    VT_String name_;
    std::int32_t scope_;
    VT_Reference<VT_Option_Value> value_;
    std::uint32_t carried_;
};

// Options in the order in which they were added. Pointers to them stay valid until the table is destroyed.
class VORNA_API VT_Option_Table {
public:
    VT_Option_Table() = default;
    VT_Option_Table(const VT_Option_Table& other);
    VT_Option_Table& operator=(const VT_Option_Table& other) = delete;

    // Adds the option, or replaces the one of the same name.
    VT_Option* add(VT_Option option);
    // Null when there is no option of that name.
    VT_Option* find(const VT_String& name) noexcept;
    const VT_Option* find(const VT_String& name) const noexcept;

    std::size_t size() const noexcept { return options_.size(); }
    VT_Option& operator[](std::size_t position) noexcept { return *options_[position]; }
    const VT_Option& operator[](std::size_t position) const noexcept { return *options_[position]; }

private:
    std::vector<std::unique_ptr<VT_Option>> options_;
};
