#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "memory_host/kestrel/host_side.h"
#include "memory_host/orvex/calls/library_loader.h"
#include "memory_host/orvex/objects/listing.h"
#include "memory_host/orvex/objects/object_system.h"

// Writes a Markdown page for each host class and one for the host functions, from what the object system says of them.
namespace {

using orvex::CallListing;
using orvex::ClassListing;
using orvex::Parameter;
using orvex::PropertyListing;

std::string code(std::string_view text) { return "`" + std::string(text) + "`"; }

std::string inCell(std::string text) {
    for (std::size_t at = 0; (at = text.find('|', at)) != std::string::npos; at += 2) text.insert(at, "\\");
    return text;
}

std::string typeText(const std::string& type) {
    return orvex::classExists(type) ? "[" + type + "](" + type + ".md)" : type;
}

std::string nameOf(const Parameter& parameter) { return parameter.name.empty() ? parameter.type : parameter.name; }

std::string joined(const std::vector<Parameter>& parameters) {
    std::string text;
    for (const Parameter& one : parameters) {
        text += text.empty() ? "" : ", ";
        text += one.isOptional ? "[" + nameOf(one) + "]" : nameOf(one);
    }
    return text;
}

// As a script writes it: "[signals, clients] = getSignalsAndClients(observers)".
std::string callText(const CallListing& call, const std::string& calledAs) {
    std::string results = joined(call.outputs);
    if (call.outputs.size() > 1) results = "[" + results + "]";
    if (!results.empty()) results += " = ";
    return results + calledAs + "(" + joined(call.inputs) + ")";
}

void writeParameters(std::ostream& page, const CallListing& call) {
    const auto isTyped = [](const Parameter& one) { return one.type != "any"; };
    if (std::none_of(call.inputs.begin(), call.inputs.end(), isTyped) &&
        std::none_of(call.outputs.begin(), call.outputs.end(), isTyped))
        return;
    page << "| | name | type |\n|---|---|---|\n";
    for (const Parameter& input : call.inputs)
        page << "| input" << (input.isOptional ? ", may be left out" : "") << " | " << code(nameOf(input)) << " | "
             << typeText(input.type) << " |\n";
    for (const Parameter& output : call.outputs)
        page << "| output | " << code(nameOf(output)) << " | " << typeText(output.type) << " |\n";
    page << "\n";
}

void writeCall(std::ostream& page, const CallListing& call, const std::string& calledAs) {
    if (!call.isDeclared) {
        page << code(calledAs) << ": its inputs and outputs are not described.\n\n";
        return;
    }
    page << code(callText(call, calledAs)) << "\n\n";
    if (!call.sentence.empty()) page << call.sentence << "\n\n";
    writeParameters(page, call);
}

std::string accessTo(const PropertyListing& property) {
    if (property.isComputed) return "computed";
    return property.isSettable ? "read, write" : "read";
}

void writeProperties(std::ostream& page, const std::vector<PropertyListing>& properties) {
    if (properties.empty()) return;
    const bool haveInitials = std::any_of(properties.begin(), properties.end(),
                                          [](const PropertyListing& one) { return !one.initial.empty(); });
    page << "## Properties\n\n| property | type | access |" << (haveInitials ? " in a new object |" : "")
         << " |\n|---|---|---|---|" << (haveInitials ? "---|" : "") << "\n";
    for (const PropertyListing& property : properties) {
        page << "| " << code(property.name) << " | " << typeText(property.type) << " | " << accessTo(property) << " | ";
        if (haveInitials) page << (property.initial.empty() ? "" : code(property.initial)) << " | ";
        page << inCell(property.sentence) << " |\n";
    }
    page << "\n";
}

void writeMethods(std::ostream& page, const ClassListing& listing) {
    if (!listing.methods.empty()) page << "## Methods\n\n";
    for (const CallListing& method : listing.methods) {
        page << "### " << method.name << "\n\n";
        writeCall(page, method, method.isStatic ? listing.fullName + "." + method.name : method.name);
    }
}

void writeClass(std::ostream& page, const ClassListing& listing) {
    page << "# " << listing.fullName << "\n\n" << listing.sentence << "\n\n";
    page << (listing.isNative ? "Registered by the library." : "Offered by the modelling side.");
    if (!listing.superclass.empty()) page << " A " << typeText(listing.superclass) << ".";
    page << "\n\n## Constructor\n\n";
    writeCall(page, listing.constructor, listing.fullName);
    writeProperties(page, listing.properties);
    writeMethods(page, listing);
}

void writeFunctions(std::ostream& page) {
    page << "# Host functions\n\nWhat scripts, and the library, call by name.\n\n";
    for (const std::string& name : orvex::functionNames()) {
        page << "## " << name << "\n\n";
        writeCall(page, *orvex::listFunction(name), name);
    }
}

template <class Write>
void writePage(const std::filesystem::path& file, Write write) {
    std::ofstream page(file);
    write(page);
    if (!page.flush()) throw std::runtime_error(file.string() + " cannot be written.");
}

void writeAll(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (const std::string& name : orvex::classNames())
        writePage(folder / (name + ".md"), [&](std::ostream& page) { writeClass(page, *orvex::listClass(name)); });
    writePage(folder / "functions.md", writeFunctions);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: class_pages LIBRARY FOLDER\n"
                     "Writes FOLDER/Full.Class.md for each class of the modelling side and of the library, and "
                     "FOLDER/functions.md.\n";
        return 2;
    }
    try {
        const orvex::LoadedLibrary library(arguments[1]);
        kestrel::installHostSide();
        writeAll(arguments[2]);
        kestrel::releaseHostSide();
    } catch (const std::exception& failure) {
        std::cerr << "class_pages: " << failure.what() << '\n';
        return 1;
    }
    return 0;
}
