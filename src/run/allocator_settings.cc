// Settings that the allocator, jemalloc, looks for under this name: memory
// comes in large pages, and a program of one thread needs one arena. What was
// freed in one large piece serves small requests too, without bound: the
// reserve that is given back when memory runs out must be of use.
extern "C" {
extern const char *malloc_conf;
const char *malloc_conf =
    "thp:always,narenas:1,oversize_threshold:0,lg_extent_max_active_fit:63";
}
