// Takes SIZE bytes of the storage that every thread has from its start.
[[gnu::tls_model("initial-exec")]] alignas(8) thread_local char storage[SIZE];

extern "C" __attribute__((visibility("default"))) char* touch() {
    return storage;
}
