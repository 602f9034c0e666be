#include "TestOrder.h"

#include <unistd.h>

#include <fstream>
#include <string>

counted_ptr<ZANFieldGroup> newOrderBody() {
    static std::string const type = "D";
    static std::string const version = "FIX.4.4";
    static std::string const texts[] = {"ORD-42", "ACC-7731", "EURUSD", "20261121-14:05:09",
                                        "XLON",   "USD"};
    counted_ptr<ZANFieldGroup> body(new ZANFieldGroup(type, version));
    body->setFieldValue(11, texts[0]);
    body->setFieldValue(1, texts[1]);
    body->setFieldValue(55, texts[2]);
    body->setFieldValue(54, '1');
    body->setFieldValue(38, 250000L);
    body->setFieldValue(40, '2');
    body->setFieldValue(44, 1.08425);
    body->setFieldValue(59, '0');
    body->setFieldValue(60, texts[3]);
    body->setFieldValue(21, '1');
    body->setFieldValue(207, texts[4]);
    body->setFieldValue(15, texts[5]);
    return body;
}

counted_ptr<ZANMessage> newOrder() {
    return counted_ptr<ZANMessage>(new ZANMessage(newOrderBody()));
}

std::int64_t residentBytes() {
    std::ifstream statm("/proc/self/statm");
    std::int64_t total = 0;
    std::int64_t resident = 0;
    statm >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}
