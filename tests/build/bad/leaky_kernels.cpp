// A kernel object as it must not be. Which fault it has is a matter of definition.
namespace krb::leaky {

#if defined(LEAKS_WEAK_FUNCTION)
inline int shared_helper(int value) {
    return value + 1;
}
extern int (*const triangle_kernels)(int);
int (*const triangle_kernels)(int) = &shared_helper;
#elif defined(LEAKS_UNIQUE_VARIABLE)
template <class> struct Holder { static inline int value = 3; };
extern int* const triangle_kernels;
int* const triangle_kernels = &Holder<int>::value;
#elif defined(LEAKS_GLOBAL)
int forgotten_static(int value);
int forgotten_static(int value) {
    return value + 1;
}
extern const int triangle_kernels;
const int triangle_kernels = 1;
#elif defined(LACKS_TABLE)
namespace {
[[maybe_unused]] const int triangle_kernels = 1;
}
#endif

} // namespace krb::leaky
