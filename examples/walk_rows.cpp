// Loads the module, opens a database and walks its rows.
#include <cstdio>
#include <dlfcn.h>

#include <halyon/database/IHynSQConnection.h>
#include <halyon/database/IHynSQRecordSet.h>
#include <halyon/framework/CHynAutoPtr.h>
#include <halyon/framework/HynIdentifiers.h>
#include <halyon/framework/MyDll.h>
#include <halyon/string/CTovStringW.h>

using namespace Halyon;

int main(int argc, char** argv)
{
    void* module = dlopen(argc > 1 ? argv[1] : "HynSQ.so", RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr)
        return std::fprintf(stderr, "cannot load the module: %s\n", dlerror()), 1;
    auto getClassObject = reinterpret_cast<HynGetClassObjectProc>(dlsym(module, kHynGetClassObjectName));

    CHynAutoPtr<IHynSQConnection> connection;
    getClassObject(CLSID_HynSQConnection, IID_IHynSQConnection, reinterpret_cast<void**>(connection.Receive()));
    connection->Connect(u":memory:", u"", u"");
    connection->ExecuteSQL(u"CREATE TABLE media (path TEXT, size INTEGER)");
    connection->ExecuteSQL(u"INSERT INTO media VALUES ('/home/ann/sea.jpg', 48211), ('/home/ann/harbour.jpg', 73904)");

    CHynAutoPtr<IHynSQRecordSet> rows;
    HynResult result = connection->OpenRecordSet(u"SELECT path, size FROM media ORDER BY path", rows.Receive());
    for (; HynSucceeded(result) && rows->IsEof() == 0; result = rows->Next())
    {
        char16_t path[256];
        std::uint32_t room = 256;
        long long size = 0;
        if (HynSucceeded(rows->GetFieldValue(u"path", path, &room)) && HynSucceeded(rows->GetFieldValue(1, &size)))
            std::printf("%8lld  %s\n", size, CTovStringW(path).ToUTF8().c_str());
    }
    return HynSucceeded(result) ? 0 : (std::fprintf(stderr, "%s\n", HynResultName(result)), 1);
}
