#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/** What this compiler makes of a fact of capi/abi.txt. */
struct kv_fact {
    /** The fact as it is written there, without its number. */
    const char* name;
    unsigned long long number;
};

/** The sizes, offsets and values; ends with a null name. */
extern const struct kv_fact kv_facts[];

/** The functions, as the linker finds them; ends with a null pointer. */
extern void (*const kv_functions[])(void);

#ifdef __cplusplus
}
#endif
