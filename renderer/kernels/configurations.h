// Lists of configurations: the combinations of rules that a family has, each once. Tables of kernels are made from the lists.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace krb {

template <class Configuration, std::size_t length> struct Configuration_List {
    static constexpr std::size_t count = length;
    Configuration each[length];
};

// Some values of one rule.
template <class Rule, std::size_t length> struct Choice {
    static constexpr std::size_t count = length;
    Rule each[length];
};
template <class Rule, class... More> Choice(Rule, More...) -> Choice<Rule, 1 + sizeof...(More)>;

// Every combination of the choices, one for each field of the configuration in order.
template <class Configuration, class... Choices> constexpr auto every(const Choices&... choices) noexcept {
    Configuration_List<Configuration, (Choices::count * ...)> list{};
    for (std::size_t i = 0; i < list.count; ++i) {
        std::size_t rest = i;
        const auto take = [&rest](const auto& choice) {
            const auto value = choice.each[rest % choice.count];
            rest /= choice.count;
            return value;
        };
        list.each[i] = Configuration{take(choices)...};
    }
    return list;
}

template <class Configuration, std::size_t... lengths>
constexpr auto join(const Configuration_List<Configuration, lengths>&... parts) noexcept {
    Configuration_List<Configuration, (lengths + ...)> list{};
    std::size_t i = 0;
    const auto append = [&](const auto& part) {
        for (const Configuration& configuration : part.each) {
            list.each[i++] = configuration;
        }
    };
    (append(parts), ...);
    return list;
}

// The rules of a configuration side by side in one number, two bits each.
template <class... Rules> constexpr std::uint32_t packed(Rules... rules) noexcept {
    std::uint32_t number = 0;
    ((number = number << 2 | static_cast<std::uint32_t>(rules)), ...);
    return number;
}

// Where each configuration stands in a list, by its packed rules.
template <class Configuration> struct Configuration_Positions {
    static constexpr std::uint8_t absent = 0xFF;
    std::uint8_t of[std::size_t{1} << Configuration::packed_bits];
    bool every_once = true;

    template <std::size_t count>
    explicit constexpr Configuration_Positions(const Configuration_List<Configuration, count>& list) {
        static_assert(count < absent);
        for (std::uint8_t& position : of) {
            position = absent;
        }
        for (std::size_t i = 0; i < count; ++i) {
            std::uint8_t& position = of[list.each[i].packed()];
            every_once = every_once && position == absent;
            position = static_cast<std::uint8_t>(i);
        }
    }
};

// Internal linkage: as an inline variable of a list with internal linkage it would be defined twice for the Windows linker.
template <const auto& list> static constexpr Configuration_Positions positions_in{list};

// One kernel for each configuration of the list, in its order.
template <class Kernel, const auto& list> struct Kernel_Table {
    Kernel* kernel[list.count];

    // The configuration must be in the list.
    template <class Configuration> constexpr Kernel* operator[](const Configuration& configuration) const noexcept {
        static_assert(positions_in<list>.every_once);
        const std::uint8_t position = positions_in<list>.of[configuration.packed()];
        assert(position < list.count);
        return kernel[position];
    }
};

// kernel_of.operator()<configuration>() for every configuration of the list.
template <class Table, const auto& list, class Kernel_Of> constexpr Table table_over(Kernel_Of kernel_of) {
    return [&]<std::size_t... i>(std::index_sequence<i...>) {
        return Table{{kernel_of.template operator()<list.each[i]>()...}};
    }
    (std::make_index_sequence<list.count>{});
}

} // namespace krb
