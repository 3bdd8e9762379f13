// parcelet: shows, lists and unpacks the mail files the library reads.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "core/context.h"
#include "core/mail_item.h"
#include "core/prop_tags.h"
#include "core/session.h"
#include "foundation/utf.h"
#include "msg/msg_reader.h"
#include "pst/standalone_reader.h"
#include "embedded_message.h"
#include "safe_file_name.h"

namespace {

constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;
constexpr uint32_t kFirstNamedId = 0x8000;

const char kUsage[] =
    "usage: parcelet [--content] FILE                    show a message: header, attachments, body\n"
    "       parcelet props [--content] [--full] FILE      list every stored property\n"
    "       parcelet attachments [--content] FILE [--save DIR]\n"
    "                                                    list the attachments, or save them into DIR\n"
    "       parcelet ls [--content] STORE [--folder PATH]\n"
    "                                                    list a store's folders with their counts, or the\n"
    "                                                    messages of one folder (PATH as \\Inbox\\Sub)\n"
    "       parcelet show [--content] STORE --id ID       show one message of a store by entry or node id\n"
    "       parcelet show [--content] FILE --attachment N show the message attached as N (2.1: the first\n"
    "                                                    attachment of the message attached second)\n"
    "  --content  tell the file's kind by its content, not its extension\n"
    "  --full     show long values whole\n";

std::string utf8(const std::u16string& text) { return ty::wideToUtf8(text); }

int reportError(const mul::ErrorKeeper& keeper, const char* what)
{
    if (keeper.hasError()) {
        const mul::ErrorRecord& error = *keeper.getError();
        std::fprintf(stderr, "parcelet: %s: %s (code 0x%08X, %s)\n", what, utf8(error.text).c_str(), error.code,
                     utf8(error.source).c_str());
    } else {
        std::fprintf(stderr, "parcelet: %s\n", what);
    }
    return kExitFailed;
}

const char* fileTypeName(uint32_t type)
{
    switch (type) {
    case FilePST: return "personal folder store";
    case FileMSG: return "Outlook message (MSG)";
    case FileEML: return "Internet message (EML/MHT)";
    case 3: return "TNEF (winmail.dat)";
    default: return "unknown";
    }
}

const char* attachmentKind(uint32_t type)
{
    switch (type) {
    case AttachByValue: return "file";
    case AttachEmbeddedByValue: return "inline";
    case AttachEmbeddedMsg: return "message";
    case AttachOLE: return "OLE object";
    default: return "none";
    }
}

// The size of the data itself, whatever kind of attachment holds it.
uint64_t dataSize(mcl::Attachment& attachment)
{
    mcl::MailProperty* data = attachment.getProperties()->findProperty(0x37010102, attachment.getId());
    return data ? data->size() : attachment.getSize();
}

void printLine(const char* label, const std::u16string& value)
{
    if (!value.empty()) std::printf("%-9s %s\n", label, utf8(value).c_str());
}

std::u16string timeOf(mcl::MailItem& item, const std::u16string& getterText, uint32_t tag)
{
    if (getterText.empty()) return {};
    std::u16string local = mcl::presentationTime(item.getHeaderProperties()->findProperty(tag, 0));
    return local.empty() ? getterText : local;
}

std::string oneLine(std::u16string text, bool full)
{
    for (char16_t& c : text)
        if (c == u'\r' || c == u'\n' || c == u'\t') c = u' ';
    constexpr size_t kShown = 120;
    if (!full && text.size() > kShown) text = text.substr(0, kShown) + u"\u2026";
    return utf8(text);
}

int showMessage(mcl::MailItem& item)
{
    std::printf("%-9s %s\n", "File", utf8(item.getFileName()).c_str());
    std::printf("%-9s %s\n", "Kind", fileTypeName(item.getFileType()));
    printLine("From", item.getFrom());
    printLine("To", item.getTo()->toString(u';'));
    printLine("CC", item.getCC()->toString(u';'));
    printLine("BCC", item.getBCC()->toString(u';'));
    printLine("Subject", item.getSubject());
    printLine("Sent", timeOf(item, item.getSubmitTime(), 0x00390040));
    printLine("Received", timeOf(item, item.getDeliveryTime(), 0x0E060040));
    mcl::Attachments* attachments = item.getAttachments();
    if (!attachments) return reportError(item, "can't read the attachments");
    if (attachments->count()) {
        std::printf("\nAttachments (%zu):\n", attachments->count());
        for (size_t i = 0; i < attachments->count(); ++i) {
            mcl::Attachment* a = attachments->getAttachment(i);
            std::printf("  %2zu. %-40s %-8s %12llu bytes", i + 1, utf8(a->getFileName(false)).c_str(),
                        attachmentKind(a->getType()), static_cast<unsigned long long>(dataSize(*a)));
            if (mcl::MailItem* message = cli::embeddedMessage(item, *a)) {
                std::printf("  \"%s\"", oneLine(message->getSubject(), false).c_str());
                message->release();
            }
            std::printf("\n");
        }
    }
    std::u16string body = item.getBodyText(BodyPlainText);
    std::printf("\n%s\n", body.empty() ? "(no text body)" : utf8(body).c_str());
    return kExitOk;
}

int listProperties(mcl::MailItem& item, bool full)
{
    mcl::MailProperties* props = item.getProperties();
    if (!props) return reportError(item, "can't read the properties");
    const auto* msgReader = dynamic_cast<const mcl::MSGReader*>(item.getReader());
    std::printf("%6s %6s  %-10s  %-32s  %s\n", "id", "parent", "tag", "name", "value");
    for (size_t i = 0; i < props->count(); ++i) {
        mcl::MailProperty* p = props->at(i);
        std::string name = utf8(p->name());
        if (msgReader && mcl::propId(p->tag()) >= kFirstNamedId) {
            std::u16string named = msgReader->namedPropertyName(mcl::propId(p->tag()));
            if (!named.empty()) name = utf8(named);
        }
        if (name.empty()) name = std::string(mcl::propTagName(p->tag()));
        std::printf("%6u %6u  0x%08X  %-32s  %s\n", p->id(), p->parentId(), p->tag(), name.c_str(),
                    oneLine(p->toString(), full).c_str());
    }
    return kExitOk;
}

int handleAttachments(mcl::MailItem& item, const char* folder)
{
    mcl::Attachments* attachments = item.getAttachments();
    if (!attachments) return reportError(item, "can't read the attachments");
    int failures = 0;
    for (size_t i = 0; i < attachments->count(); ++i) {
        mcl::Attachment* a = attachments->getAttachment(i);
        std::string name = utf8(a->getFileName(false));
        if (!folder) {
            std::printf("%2zu. %s (%s, %llu bytes)\n", i + 1, name.c_str(), attachmentKind(a->getType()),
                        static_cast<unsigned long long>(dataSize(*a)));
            continue;
        }
        std::string safe = cli::safeFileName(name, "attachment-" + std::to_string(i + 1));
        std::filesystem::path target = cli::unusedPath(folder, safe);
        if (!a->save(ty::utf8ToWide(target.string()))) {
            reportError(*a, ("can't save " + name).c_str());
            ++failures;
            continue;
        }
        if (target.filename().string() != name)
            std::printf("saved %s as %s\n", name.c_str(), target.string().c_str());
        else
            std::printf("saved %s\n", target.string().c_str());
    }
    return failures ? kExitFailed : kExitOk;
}

// A store's reader that keeps to the folder it is sent to (the default one runs through all).
mcl::PSTStandaloneReader* openStore(mcl::Context& context, mcl::Session& session, const std::string& file,
                                    bool byContent)
{
    context.setContextVersion(3);
    mcl::BaseReader* reader = session.createReaderEx(ty::utf8ToWide(file), byContent);
    if (!reader) {
        reportError(session, ("can't read " + file).c_str());
        return nullptr;
    }
    auto* store = dynamic_cast<mcl::PSTStandaloneReader*>(reader);
    if (!store) {
        std::fprintf(stderr, "parcelet: %s is no personal folder store\n", file.c_str());
        reader->release();
    }
    return store;
}

void listFolder(PST::Folder& folder, int depth)
{
    std::string name = utf8(mcl::FolderTree::escapeName(folder.getName()));
    std::printf("%*s%-*s %7u %7u\n", 2 * depth, "", 48 - 2 * depth, name.empty() ? "(root)" : name.c_str(),
                folder.getMessageCount(), folder.getUnreadCount());
    if (!folder.hasSubfolders()) return;
    for (PST::Folder* child = folder.firstChild(); child; child = child->next()) listFolder(*child, depth + 1);
}

int listStore(mcl::PSTStandaloneReader& store, const std::string& folderPath)
{
    if (folderPath.empty()) {
        std::printf("%-48s %7s %7s\n", "folder", "items", "unread");
        listFolder(*store.getRootFolder(), 0);
        return kExitOk;
    }
    if (!store.changePath(ty::utf8ToWide(folderPath))) {
        std::fprintf(stderr, "parcelet: no folder %s\n", folderPath.c_str());
        return kExitFailed;
    }
    std::printf("%-10s  %-19s  %-32s  %s\n", "node", "date", "from", "subject");
    int failures = 0;
    for (uint32_t i = 0; i < store.getCurrentFolder()->getMessageCount(); ++i) {
        const uint64_t nodeId = store.getCurrentFolder()->getMessageId(i);
        if (nodeId == 0) continue;
        auto* item = new mcl::MailItem(&store, mcl::LoadListing);
        uint32_t filter = mcl::LoadListing;
        const uint64_t id = nodeId;
        item->getHeaderProperties()->addProperty(mcl::kNodeIdTag, 0, u"EntryID", &id, sizeof id);
        if (store.load(item->getHeaderProperties(), &filter)) {
            std::printf("%-10llu  %-19s  %-32s  %s\n", static_cast<unsigned long long>(nodeId),
                        utf8(item->getSubmitTime()).c_str(), oneLine(item->getFrom(), false).c_str(),
                        oneLine(item->getSubject(), false).c_str());
        } else {
            reportError(store, ("can't read message " + std::to_string(nodeId)).c_str());
            ++failures;
        }
        item->release();
    }
    return failures ? kExitFailed : kExitOk;
}

// An id of digits only is a node id; anything else is the entry as hexadecimal text.
int showStoredMessage(mcl::PSTStandaloneReader& store, const std::string& id)
{
    const bool nodeId = !id.empty() && id.size() < 2 * mcl::kEntrySize &&
                        id.find_first_not_of("0123456789") == std::string::npos;
    auto* item = new mcl::MailItem(&store, mcl::kLoadEverything);
    uint32_t filter = mcl::kLoadEverything;
    const bool loaded = nodeId ? store.loadByNid(item->getHeaderProperties(), &filter, std::stoull(id))
                               : store.loadByID(item->getHeaderProperties(), &filter, ty::utf8ToWide(id));
    int result = loaded ? showMessage(*item) : reportError(store, ("no message " + id).c_str());
    item->release();
    return result;
}

}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> args(argv + 1, argv + argc);
    std::string command = "show";
    if (!args.empty() && (args[0] == "props" || args[0] == "attachments" || args[0] == "show" || args[0] == "ls")) {
        command = args[0];
        args.erase(args.begin());
    }
    bool byContent = false, full = false;
    std::string saveFolder, file, folderPath, messageId, attachmentNumbers;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--content") {
            byContent = true;
        } else if (args[i] == "--full") {
            full = true;
        } else if (args[i] == "--save" && i + 1 < args.size() && command == "attachments") {
            saveFolder = args[++i];
        } else if (args[i] == "--folder" && i + 1 < args.size() && command == "ls") {
            folderPath = args[++i];
        } else if (args[i] == "--id" && i + 1 < args.size() && command == "show") {
            messageId = args[++i];
        } else if (args[i] == "--attachment" && i + 1 < args.size() && command == "show") {
            attachmentNumbers = args[++i];
        } else if (args[i] == "-h" || args[i] == "--help") {
            std::fputs(kUsage, stdout);
            return kExitOk;
        } else if (file.empty() && (args[i].empty() || args[i][0] != '-')) {
            file = args[i];
        } else {
            std::fputs(kUsage, stderr);
            return kExitUsage;
        }
    }
    if (file.empty()) {
        std::fputs(kUsage, stderr);
        return kExitUsage;
    }
    if (!saveFolder.empty() && !std::filesystem::is_directory(saveFolder)) {
        std::fprintf(stderr, "parcelet: %s is not a folder\n", saveFolder.c_str());
        return kExitUsage;
    }

    mcl::Context context;
    mcl::Session session;
    if (command == "ls" || !messageId.empty()) {
        mcl::PSTStandaloneReader* store = openStore(context, session, file, byContent);
        if (!store) return kExitFailed;
        int result = command == "ls" ? listStore(*store, folderPath) : showStoredMessage(*store, messageId);
        store->release();
        return result;
    }
    mcl::MailItem* item = session.readFile(ty::utf8ToWide(file), byContent);
    if (!item) return reportError(session, ("can't read " + file).c_str());
    int result = kExitOk;
    if (!attachmentNumbers.empty()) {
        std::string error;
        mcl::MailItem* attached = cli::embeddedMessageAt(*item, attachmentNumbers, error);
        result = attached ? showMessage(*attached) : reportError(*item, error.c_str());
        if (attached) attached->release();
    } else {
        result = command == "props"         ? listProperties(*item, full)
                 : command == "attachments" ? handleAttachments(*item, saveFolder.empty() ? nullptr : saveFolder.c_str())
                                            : showMessage(*item);
    }
    item->release();
    return result;
}
