#pragma once
// The services of the shared component, handed as one object by each opener to the screen it opens.
// It refers to the services; it owns none of them (the desktop, or a test, keeps them alive for longer
// than any screen that holds this object).

namespace adjustacc::messaging {
class HostLink;
}

namespace adjustacc::platform {

class CheckDigit;
class Clock;
class CodeLookup;
class CodeTableSource;
class ErrorReporter;
class FieldMarking;
class FormNumberValidator;
class KeyFilters;
class NextNumber;
class PrintComponentFactory;
class SessionSettings;
class StatusBar;
class TemplateLookup;
class TroopDistricts;
class Ui;
class User;

struct Services {
  Ui& ui;
  messaging::HostLink& hostLink;    // what request messages are sent through
  Clock& clock;                     // today, for every date rule
  User& user;                       // the signed-on officer and rights
  SessionSettings& session;         // application name and version, update time-out, session folder
  StatusBar& statusBar;             // status text and busy switch
  ErrorReporter& errors;            // the shared error reporter (through the error trap)
  CodeLookup& codes;                // code descriptions
  CodeTableSource& codeTables;      // code box rows by query text
  KeyFilters& keyFilters;
  CheckDigit& checkDigit;
  FormNumberValidator& formNumbers;
  TroopDistricts& troopDistricts;
  NextNumber& numbers;
  FieldMarking& fieldMarking;
  PrintComponentFactory& printing;
  TemplateLookup& templates;
};

}  // namespace adjustacc::platform
