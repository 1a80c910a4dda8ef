#include "TableText.h"

#include "MessageCapture.h"

std::string tableText(const KvTTable& table) {
    const MessageCapture text;
    printTable(text.writer(), table);
    return text.text();
}
