// Settings that the allocator, jemalloc, looks for under this name: memory
// comes in large pages, and a program of one thread needs one arena.
extern "C" {
extern const char *malloc_conf;
const char *malloc_conf = "thp:always,narenas:1";
}
