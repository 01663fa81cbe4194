// Classes, and what every object of every class does whatever else it is for.
#include <validate/Check.h>

#include <algorithm>
#include <cstdint>
#include <functional>

#include <validate/Step.h>
#include <validate/Subject.h>

namespace HynValidate
{
using namespace Frozen;

namespace
{
using Identifiers = std::vector<Identifier>;

Identifiers Without(Identifiers list, const Identifiers& others)
{
    std::erase_if(list, [&](const Identifier& id) { return Contains(others, id); });
    return list;
}

// Requires: the object gives the right counts.
std::uint32_t CountOf(void* object)
{
    AddRef(object);
    return Release(object);
}

// `call` must refuse what it is asked for and leave its out pointer alone.
void ExpectRefused(const std::string& what, const std::function<std::int32_t(void**)>& call)
{
    int marker = 0;
    void* out = &marker;
    Step(what);
    ExpectCode(what, call(&out), kNoInterface);
    if (out != &marker)
        throw Failure(what + " is refused, but the out pointer is changed");
}

// Runs `test` with an object for every interface of every class.
void ForEachInterface(Subject& subject, const std::function<void(const Module&, const Class&, const Identifier&)>& test)
{
    const Module module(subject.Path());
    for (const Class& cls : subject.Classes())
    {
        for (const Identifier& iid : cls.AllInterfaces())
        {
            Step("making " + NameOf(cls.id) + " with " + NameOf(iid));
            test(module, cls, iid);
        }
    }
}

// An object of the class, through IID_IHynUnknown or, where that is not answered, one of the interfaces; null when the
// module does not make the class.
void* TryToMake(const Module& module, const Identifier& cls, const Identifiers& interfaces)
{
    Step("asking for the class " + NameOf(cls));
    void* object = nullptr;
    if (module.GetClassObject(cls, kUnknown, &object) == kOk)
        return object;
    for (const Identifier& iid : interfaces)
    {
        if (module.GetClassObject(cls, iid, &object) == kOk)
            return object;
    }
    return nullptr;
}

bool Answers(void* object, const Identifier& iid)
{
    void* out = nullptr;
    return Query(object, iid, &out) == kOk;
}

// The references that are taken here are never given back, deliberately: a module that counts wrong must not destroy
// the object while it is asked.
Identifiers AnsweredInterfaces(void* object, const Class& named, const Identifiers& candidates)
{
    Identifiers answered;
    for (const Identifier& iid : named.interfaces)
    {
        Step("asking " + NameOf(named.id) + " for " + NameOf(iid));
        if (!Answers(object, iid))
            throw Failure(NameOf(named.id) + " does not answer " + NameOf(iid));
        answered.push_back(iid);
    }
    Step("asking " + NameOf(named.id) + " for interfaces");
    // The word of an object that says yes to everything is worth nothing.
    if (Answers(object, Strangers({}).back()))
        return answered;
    for (const Identifier& iid : candidates)
    {
        if (!Contains(answered, iid) && Answers(object, iid))
            answered.push_back(iid);
    }
    return answered;
}
} // namespace

void CheckClasses(Subject& subject)
{
    const Module module(subject.Path());
    std::vector<Class> tried = subject.Classes();
    const std::size_t named = tried.size();
    for (const Identifier& id : subject.Known(module, "CLSID_"))
    {
        if (std::none_of(tried.begin(), tried.end(), [&](const Class& cls) { return cls.id == id; }))
            tried.push_back({id, {}});
    }
    const Identifiers candidates = subject.Known(module, "IID_");
    std::vector<Class> made;
    for (std::size_t i = 0; i < tried.size(); ++i)
    {
        void* object = TryToMake(module, tried[i].id, i < named ? tried[i].interfaces : candidates);
        if (object != nullptr)
            made.push_back({tried[i].id, AnsweredInterfaces(object, tried[i], candidates)});
        else if (i < named)
            throw Failure("does not make " + NameOf(tried[i].id));
    }
    subject.Classes() = made;
    if (made.empty())
        throw Failure("makes none of the " + std::to_string(tried.size()) +
                      " classes that were tried; --class names others");
}

void CheckUnknownClass(Subject& subject)
{
    const Module module(subject.Path());
    const Identifiers interfaces = subject.Known(module, "IID_");
    Identifiers classes = subject.Known(module, "CLSID_");
    Identifiers made;
    for (const Class& cls : subject.Classes())
        made.push_back(cls.id);
    classes.insert(classes.end(), made.begin(), made.end());
    for (const Identifiers& others : {Strangers(classes), Without(classes, made), Without(interfaces, made)})
    {
        for (const Identifier& id : others)
            ExpectRefused("MyDllGetClassObject for the class " + NameOf(id),
                          [&](void** out) { return module.GetClassObject(id, kUnknown, out); });
    }
}

void CheckRootSlots(Subject& subject)
{
    const Module module(subject.Path());
    for (const Class& cls : subject.Classes())
    {
        const std::string name = NameOf(cls.id);
        void* object = module.Make(cls.id, kUnknown);
        ExpectSlotsOfCode(object, kRootEnd, name);
        Step("calling slot 0 of " + name);
        ExpectNumber("slot 0 (AddRef) of " + name + " after the first reference", AddRef(object), 2);
        Step("calling slot 1 of " + name);
        ExpectNumber("slot 1 (Release) of " + name + " with two references", Release(object), 1);
        // Of these some are never given back, so that an interface which counts wrong has an object all the same.
        for (int i = 0; i < 100; ++i)
            AddRef(object);
        for (const Identifier& iid : cls.AllInterfaces())
        {
            const std::string of = " of " + NameOf(iid) + " of " + name;
            void* out = nullptr;
            Step("calling slot 2 (QueryInterface)" + of);
            if (Query(object, iid, &out) != kOk)
                continue; // for the check of queries to tell
            ExpectSlotsOfCode(out, kRootEnd, NameOf(iid) + " of " + name);
            Step("calling slots 0 and 1" + of);
            const std::uint32_t count = AddRef(out);
            ExpectNumber("slot 0 (AddRef)" + of + " with " + std::to_string(count) + " references", AddRef(out),
                         count + 1);
            ExpectNumber("slot 1 (Release)" + of + " with " + std::to_string(count + 1) + " references", Release(out),
                         count);
        }
    }
}

void CheckReferenceBalance(Subject& subject)
{
    const auto test = [](const Module& module, const Class& cls, const Identifier& iid)
    {
        void* object = module.Make(cls.id, iid);
        const std::string of = NameOf(cls.id) + " with " + NameOf(iid);
        ExpectNumber("the count of a new " + of, CountOf(object), 1);
        for (std::uint32_t count = 2; count <= 100; ++count)
            ExpectNumber("AddRef of " + of, AddRef(object), count);
        for (const Identifier& other : cls.AllInterfaces())
        {
            const std::string query = "the count of " + of + " after a query for " + NameOf(other);
            Step("reading " + query);
            void* out = nullptr;
            if (Query(object, other, &out) != kOk)
                continue; // for the check of queries to tell
            ExpectNumber(query, CountOf(object), 101);
            ExpectNumber("Release of " + NameOf(other) + " of " + of, Release(out), 100);
        }
        if (void* out = nullptr; Query(object, Strangers({}).back(), &out) == kOk)
            Release(out);
        ExpectNumber("the count of " + of + " after a query for an unknown interface", CountOf(object), 100);
        for (std::uint32_t count = 100; count-- > 0;)
            ExpectNumber("Release of " + of, Release(object), count);
    };
    ForEachInterface(subject, test);
}

void CheckQueryLaws(Subject& subject)
{
    const Module any(subject.Path());
    const Identifiers candidates = subject.Known(any, "IID_");
    const auto test = [&](const Module& module, const Class& cls, const Identifier& first)
    {
        void* object = module.Make(cls.id, first);
        const Identifiers answered = cls.AllInterfaces();
        const auto query = [&](void* from, const Identifier& by, const Identifier& iid)
        {
            const std::string what = NameOf(cls.id) + " asked through " + NameOf(by) + " for " + NameOf(iid);
            Step(what);
            void* out = nullptr;
            ExpectCode(what, Query(from, iid, &out), kOk);
            return out;
        };
        void* identity = query(object, first, kUnknown);
        for (const Identifier& by : answered)
        {
            void* from = query(object, first, by);
            for (const Identifier& iid : answered)
            {
                void* out = query(from, by, iid);
                const bool isIdentity = iid == kUnknown;
                if (out != (isIdentity ? identity : query(object, first, iid)))
                    throw Failure(NameOf(cls.id) + " gives another pointer for " + NameOf(iid) + " through " +
                                  NameOf(by) + " than through " + NameOf(first));
            }
            for (const Identifier& iid : Without(candidates, answered))
            {
                void* out = nullptr;
                ExpectCode(NameOf(cls.id) + " asked through " + NameOf(by) + " for " + NameOf(iid),
                           Query(from, iid, &out), Query(object, iid, &out));
            }
        }
    };
    ForEachInterface(subject, test);
}

void CheckUnknownInterface(Subject& subject)
{
    const auto test = [](const Module& module, const Class& cls, const Identifier& iid)
    {
        void* object = module.Make(cls.id, iid);
        for (const Identifier& other : Strangers(cls.AllInterfaces()))
        {
            ExpectRefused("MyDllGetClassObject for " + NameOf(cls.id) + " with the interface " + NameOf(other),
                          [&](void** out) { return module.GetClassObject(cls.id, other, out); });
            ExpectRefused(NameOf(cls.id) + " asked through " + NameOf(iid) + " for " + NameOf(other),
                          [&](void** out) { return Query(object, other, out); });
        }
        ExpectNumber("Release of " + NameOf(cls.id) + " after refused queries", Release(object), 0);
    };
    ForEachInterface(subject, test);
}

void CheckNullArguments(Subject& subject)
{
    const Identifier stranger = Strangers({}).back();
    const auto test = [&](const Module& module, const Class& cls, const Identifier& iid)
    {
        void* object = module.Make(cls.id, iid);
        const std::string suffix = " and a null out pointer";
        const auto expect = [&](const std::string& what, std::int32_t expected, const auto& call)
        {
            Step(what + suffix);
            ExpectCode(what + suffix, call(), expected);
        };
        const std::string make = "MyDllGetClassObject with ";
        expect(make + "an unknown class", kNoInterface, [&] { return module.GetClassObject(stranger, iid, nullptr); });
        expect(make + NameOf(cls.id) + ", an unknown interface", kNoInterface,
               [&] { return module.GetClassObject(cls.id, stranger, nullptr); });
        expect(make + NameOf(cls.id) + ", " + NameOf(iid), kPointer,
               [&] { return module.GetClassObject(cls.id, iid, nullptr); });
        const std::string query = "QueryInterface of " + NameOf(cls.id) + " with ";
        expect(query + "an unknown interface", kNoInterface, [&] { return Query(object, stranger, nullptr); });
        expect(query + NameOf(iid), kPointer, [&] { return Query(object, iid, nullptr); });
        ExpectNumber("the count of " + NameOf(cls.id) + " after queries with null pointers", CountOf(object), 1);
    };
    ForEachInterface(subject, test);
}
} // namespace HynValidate
