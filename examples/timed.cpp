// Brackets a piece of work, as a host does that wants to know where its time goes.

#include <halyon/tools/CHynProfileHelper.h>

int main()
{
    const Halyon::CHynProfileHelper probe(u"first scan", 1);
    return probe.PrintTimestamp() != 0 ? 0 : 1;
}
