// An extension of the engine with a storage layer of its own name, "plain", which is the usual one.
#include <sqlite3ext.h>
SQLITE_EXTENSION_INIT1

extern "C"
{
    // The engine looks this name up, made of the file's.
    __attribute__((visibility("default"))) int sqlite3_storagelayer_init(sqlite3* connection, char** words,
                                                                         const sqlite3_api_routines* api);

    int sqlite3_storagelayer_init(sqlite3* /*connection*/, char** /*words*/, const sqlite3_api_routines* api)
    {
        SQLITE_EXTENSION_INIT2(api)
        static sqlite3_vfs layer = *sqlite3_vfs_find(nullptr);
        layer.zName = "plain";
        return sqlite3_vfs_register(&layer, 0); // not "permanently": who loads it sees to that
    }
}
