// What all fuzzers tell their sanitizer. Memory that was freed is kept from use for a while, by
// default until it is 256 MB: that many fresh pages cost more than most inputs.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl*)
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "quarantine_size_mb=8"; }
