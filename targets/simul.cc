// Simulator user file: the data server of a simulation. The simulator has
// no access to the user's types; this program links the user's data
// functions ("mosk_data_user_<T>.h"), starts the simulator on the module
// and evaluates each request it sends on a socket, a comma-separated text:
// a method call, a binary or unary operator, or an external constant. The
// dispatch is written from the data tables; the socket server is fixed
// text. Nothing of the wood is written.

#include "model/module.h"

#include "data/data.h"

#include <algorithm>
#include <functional>
#include <list>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> typeNames()
{
    std::vector<std::string> names;
    if (Compilation::GDataTypeTable != nullptr)
        if (std::map<std::string, int>* types = Compilation::GDataTypeTable->getTypeTable())
            for (const auto& type : *types)
                names.push_back(type.first);
    return names;
}

std::vector<MethodDecl*> methods()
{
    std::vector<MethodDecl*> result;
    if (Compilation::GDataMethodTable != nullptr && Compilation::GDataMethodTable->getMethodList() != nullptr)
        for (MethodDecl* m : *Compilation::GDataMethodTable->getMethodList())
            if (m != nullptr)
                result.push_back(m);
    return result;
}

// One function of the type's predefined part: `kind` is "string" (result
// "--" when no type matches) or "bool" (false), `body` the assignment of
// the branch of type T, written by `branch`.
void put_type_function(std::ostream& os, const std::string& kind, const std::string& header,
                       const std::function<std::string(const std::string&)>& branch)
{
    os << kind << " " << header << "\n"
       << "{\n"
       << (kind == "string" ? "   string result=string(\"--\");\n" : "   bool result=false;\n");
    for (const std::string& t : typeNames())
        os << "   if (type ==  \"" << t << "\")\n"
           << "   {\n"
           << branch(t) << "\n"
           << "   }\n";
}

void SIMUL_ZKC_put_predef_func(std::ostream& os)
{
    os << "using namespace std;\n"
       << "\n"
       << "/* TYPE RELATED FUNCTIONS  */\n"
       << "/*=======================*/\n"
       << "\n"
       << "/* Check Type */ \n";
    put_type_function(os, "bool", "check_type (string type, string arg)",
                      [](const std::string& t) { return "      result=check_" + t + "(arg);"; });
    os << "   return result; \n"
       << "}\n"
       << "\n"
       << "/* string to bool conversion */\n"
       << "bool string_to_bool (string s)\n"
       << "{\n"
       << "   return s == \"true\";\n"
       << "}\n"
       << "\n"
       << "/* Binary Operators */ \n";

    struct Binop {
        const char* name;
        const char* kind;
        const char* op;
    };
    const Binop binops[] = {
        {"binop_plus", "string", "+"},   {"binop_minus", "string", "-"},   {"binop_mult", "string", "*"},
        {"binop_div", "string", "/"},    {"binop_equal", "bool", "=="},    {"binop_notequal", "bool", "!="},
        {"binop_inf", "bool", "<"},      {"binop_infe", "bool", "<="},     {"binop_sup", "bool", ">"},
        {"binop_supe", "bool", ">="},
    };
    for (const Binop& b : binops) {
        std::string op = b.op;
        bool equality = op == "==" || op == "!=";
        put_type_function(os, b.kind, std::string(b.name) + " (string type, string arg1, string arg2)",
                          [&](const std::string& t) -> std::string {
                              std::string left = "string_to_" + t + "(arg1)", right = "string_to_" + t + "(arg2)";
                              if (std::string(b.kind) == "string")
                                  return "      result= " + t + "_to_string(" + left + " " + op + " " + right + ");";
                              if (equality)
                                  return "      result=  " + left + " " + op + "  " + right + ";";
                              return "      result= " + left + " " + op + "  " + right + ";";
                          });
        os << "   return result;\n"
           << "}\n"
           << "\n";
    }
}

// The fields a request can be asked for: those of "BOP", and those of the
// method with the most arguments. Missing fields read as empty texts.
std::size_t fieldsRead()
{
    std::size_t fields = 6;
    for (MethodDecl* m : methods())
        if (m->getArgTypeList() != nullptr)
            fields = std::max(fields, 2 + m->getArgTypeList()->size());
    return fields;
}

void SIMUL_ZKC_put_method(std::ostream& os)
{
    os << "   if (v[0] == \"MC\")\n"
       << "   {\n";
    for (MethodDecl* m : methods()) {
        os << "      if (v[1] == \"" << m->getName() << "\")\n"
           << "      { \n";
        std::list<std::string>* args = m->getArgTypeList();
        if (args != nullptr && !args->empty()) {
            std::string checks, call;
            int i = 2;
            for (const std::string& t : *args) {
                std::string field = "(v[" + std::to_string(i++) + "])";
                checks += (checks.empty() ? "" : " && ") + ("check_" + t + field);
                call += (call.empty() ? "" : ", ") + ("string_to_" + t + field);
            }
            os << "         if (" << checks << ")\n"
               << "            data = " << m->getReturnType() << "_to_string(" << m->getName() << "(" << call
               << "));\n"
               << "            else\n"
               << "                 data = string(\"--\");\n";
        } else {
            os << "        data = " << m->getReturnType() << "_to_string(" << m->getName() << "());\n";
        }
        os << "      }\n";
    }
    os << "   }\n";
}

void SIMUL_ZKC_put_binary_op(std::ostream& os)
{
    auto reply = [](const std::string& test) { return "(" + test + ") ? string(\"true\") : string(\"false\")"; };
    struct Branch {
        int op;
        std::string value;
    };
    const Branch branches[] = {
        {DataExpr::Plus, "binop_plus(v[2], v[1], v[4])"},
        {DataExpr::Minus, "binop_minus(v[2], v[1], v[4])"},
        {DataExpr::Mult, "binop_mult(v[2], v[1], v[4])"},
        {DataExpr::Div, "binop_div(v[2], v[1], v[4])"},
        // The conjunction reads the type field as its left operand and the
        // disjunction the single-bar operator: the simulator relies on
        // these replies as they are.
        {DataExpr::And, reply("string_to_bool(v[2]) && string_to_bool(v[4])")},
        {DataExpr::Or, reply("string_to_bool(v[1]) | string_to_bool(v[4])")},
        {DataExpr::Eq, reply("binop_equal(v[2], v[1], v[4])")},
        {DataExpr::Neq, reply("binop_notequal(v[2], v[1], v[4])")},
        {DataExpr::Inf, reply("binop_inf(v[2], v[1], v[4])")},
        {DataExpr::Infe, reply("binop_infe(v[2], v[1], v[4])")},
        {DataExpr::Sup, reply("binop_sup(v[2], v[1], v[4])")},
        {DataExpr::Supe, reply("binop_supe(v[2], v[1], v[4])")},
    };
    os << "   //BINARY OP\n"
       << "   if (v[0] == \"BOP\")\n"
       << "   {\n"
       << "      if (v[2] != v[5])\n"
       << "      {\n"
       << "         cerr << \"Error: Binary operator with arguments not having the same type\" << endl;\n"
       << "         data = string(\"--\");\n"
       << "      }\n"
       << "      else if (check_type(v[2], v[1]) && check_type(v[2], v[4]))\n"
       << "      {\n";
    bool first = true;
    for (const Branch& b : branches) {
        os << (first ? "         if" : "         else if") << " (v[3] == \"" << DataExpr::MOSK_opname(b.op)
           << "\")\n"
           << "            data = " << b.value << ";\n";
        first = false;
    }
    os << "         else\n"
       << "         {\n"
       << "            cerr << \"Error: SIMUL_ZKC:unknown binary operator\" << endl;\n"
       << "            data = string(\"--\");\n"
       << "         }\n"
       << "      }\n"
       << "      else\n"
       << "         data = string(\"--\");\n"
       << "   }\n";
}

void SIMUL_ZKC_put_unary_op(std::ostream& os)
{
    std::string minus = DataExpr::MOSK_opname(DataExpr::Uminus);
    os << "   //UNARY OP\n"
       << "   if (v[0] == \"UOP\")\n"
       << "   {\n"
       << "      if (check_type(v[3], v[2]))\n"
       << "      {\n"
       // The negation is handed back as text, not computed.
       << "         if (v[1] == \"" << minus << "\")\n"
       << "            data = string(\"" << minus << "\") + v[2];\n"
       << "         else if (v[1] == \"" << DataExpr::MOSK_opname(DataExpr::Not) << "\")\n"
       << "            data = string_to_bool(v[2]) ? string(\"false\") : string(\"true\");\n"
       << "         else\n"
       << "         {\n"
       << "            cerr << \"Error: SIMUL_ZKC:unknown unary operator\" << endl;\n"
       << "            data = string(\"--\");\n"
       << "         }\n"
       << "      }\n"
       << "      else\n"
       << "         data = string(\"--\");\n"
       << "   }\n";
}

// Only external constants are asked for: the simulator knows the values
// that the module itself defines.
void SIMUL_ZKC_put_const(std::ostream& os)
{
    os << "   if (v[0] == \"CONST\")\n"
       << "   {\n";
    if (std::list<ConstantDecl*>* constants = Compilation::GDataConstantTable->getConstantList())
        for (ConstantDecl* k : *constants)
            if (k != nullptr && k->getValueTable() == nullptr)
                os << "      if (v[1] == \"" << k->getName() << "\")\n"
                   << "       {\n"
                   << "           data = " << k->getType() << "_to_string(" << k->getName() << ");\n"
                   << "       }\n";
    os << "   }\n";
}

void put_compute_data_value(std::ostream& os)
{
    // Each field ends at a comma: a last field without its comma is lost.
    os << "string compute_data_value(const string & param)\n"
       << "{\n"
       << "   int n,l;\n"
       << "   string data,tmp;\n"
       << "   vector<string> v;\n"
       << "   n = 0;\n"
       << "   l = param.length();\n"
       << "   tmp = string(\"\");\n"
       << "   while (n < l)\n"
       << "   {\n"
       << "      if (param[n] == ',')\n"
       << "      {\n"
       << "         v.push_back(tmp);\n"
       << "         tmp = string(\"\");\n"
       << "      }\n"
       << "      else\n"
       << "         tmp = tmp + param[n];\n"
       << "      n++;\n"
       << "   }\n"
       << "   while (v.size() < " << fieldsRead() << ")\n"
       << "      v.push_back(string(\"\"));\n";
    if (Compilation::GDataMethodTable != nullptr) {
        os << "   //  METHOD CALL\n";
        SIMUL_ZKC_put_method(os);
    }
    SIMUL_ZKC_put_binary_op(os);
    SIMUL_ZKC_put_unary_op(os);
    if (Compilation::GDataConstantTable != nullptr) {
        os << "   //CONSTANTS\n";
        SIMUL_ZKC_put_const(os);
    }
    os << "   return data;\n"
       << "}\n"
       << "\n";
}

// The server of one client: it starts the simulator on the module with the
// port it was given, and answers one request at a time until the simulator
// closes the connexion.
std::vector<std::string> socketServer()
{
    return {
        "#define MOSK_BUFFER_RECEPT_LENGTH 1024",
        "",
        "class sockserv",
        "{",
        "protected:",
        "   void init(void);",
        "   unsigned internal_portnumber;",
        "   char * internal_hostname;",
        "   char * internal_hostip;",
        "   int internal_fd;",
        "public:",
        "   sockserv(unsigned portnum);",
        "   unsigned accept_connection(void);",
        "   int read (string & buffer);",
        "   int write (const string & buffer);",
        "   unsigned portnumber(void) { return internal_portnumber; }",
        "   char * hostname(void) { return internal_hostname; }",
        "   char * hostip(void) { return internal_hostip; }",
        "   int fd(void) { return internal_fd; }",
        "};",
        "",
        "#ifdef WIN32",
        "#include <winsock.h>",
        "#include <io.h>",
        "typedef int socklen_t;",
        "#define MOSK_BAD_SOCKET(s) ((s) == INVALID_SOCKET)",
        "#else",
        "#include <sys/types.h>",
        "#include <sys/socket.h>",
        "#include <netinet/in.h>",
        "#include <arpa/inet.h>",
        "#include <netdb.h>",
        "#include <unistd.h>",
        "#include <string.h>",
        "#include <stdlib.h>",
        "#define MOSK_BAD_SOCKET(s) ((s) < 0)",
        "#endif",
        "",
        "sockserv::sockserv(unsigned portnum)",
        "{",
        "   struct sockaddr_in address;",
        "   socklen_t length;",
        "   int s;",
        "   init();",
        "   internal_portnumber = portnum;",
        "   internal_hostname = NULL;",
        "   internal_hostip = NULL;",
        "   s = socket (AF_INET, SOCK_STREAM, 0);",
        "   if (MOSK_BAD_SOCKET(s))",
        "   {",
        "      cerr << \"Cannot create socket\" << endl;",
        "      exit(1);",
        "   }",
        "   memset(&address, 0, sizeof(address));",
        "   address.sin_family = AF_INET;",
        "   address.sin_addr.s_addr = htonl(INADDR_ANY);",
        "   address.sin_port = htons(portnum);",
        "   if (bind (s, (struct sockaddr *) &address, sizeof(address)) < 0)",
        "   {",
        "      cerr << \"cannot create socket\" << endl;",
        "      exit(1);",
        "   }",
        "   length = sizeof(address);",
        "   if (getsockname (s, (struct sockaddr *) &address, &length) < 0)",
        "   {",
        "      cerr << \"cannot create socket\" << endl;",
        "      exit(1);",
        "   }",
        "   internal_portnumber = ntohs(address.sin_port);",
        "   if (listen (s, 5) < 0)",
        "   {",
        "      cerr << \"cannot create socket\" << endl;",
        "      exit(1);",
        "   }",
        "   internal_fd = s;",
        "}",
        "",
        "unsigned sockserv::accept_connection(void)",
        "{",
        "   struct sockaddr_in address;",
        "   socklen_t length = sizeof(address);",
        "   struct hostent * host;",
        "   int s;",
        "   s = accept (internal_fd, (struct sockaddr *) &address, &length);",
        "   if (MOSK_BAD_SOCKET(s))",
        "   {",
        "      cerr << \"unable to make connexion\" << endl;",
        "      return 0;",
        "   }",
        "   internal_hostip = strdup(inet_ntoa(address.sin_addr));",
        "   host = gethostbyaddr ((char *) &address.sin_addr, sizeof(address.sin_addr), AF_INET);",
        "   if (host != NULL)",
        "      internal_hostname = strdup(host->h_name);",
        "   else",
        "      internal_hostname = strdup(internal_hostip);",
        "   internal_fd = s;",
        "   return s;",
        "}",
        "",
        "int sockserv::read (string & buffer)",
        "{",
        "   char received[MOSK_BUFFER_RECEPT_LENGTH];",
        "   int length;",
        "   length = recv (internal_fd, received, MOSK_BUFFER_RECEPT_LENGTH - 1, 0);",
        "   if (length < 0)",
        "   {",
        "      buffer = string(\"\");",
        "      return length;",
        "   }",
        "   received[length] = '\\0';",
        "   buffer = string(received);",
        "   return length;",
        "}",
        "",
        "int sockserv::write (const string & buffer)",
        "{",
        "   return send (internal_fd, buffer.c_str(), buffer.length(), 0);",
        "}",
        "",
        "void sockserv::init(void)",
        "{",
        "#ifdef WIN32",
        "   WSADATA wsadata;",
        "   WSAStartup(MAKEWORD(1,1), &wsadata);",
        "#if 0",
        "   if (LOBYTE(wsadata.wVersion) != 1 || HIBYTE(wsadata.wVersion) != 1)",
        "   {",
        "      cerr << \"no usable winsock\" << endl;",
        "      WSACleanup();",
        "   }",
        "#endif",
        "#endif",
        "}",
        "",
        "string unsint2s(unsigned d)",
        "{",
        "   string s;",
        "   do",
        "   {",
        "      s = char('0' + d % 10) + s;",
        "      d = d / 10;",
        "   }",
        "   while (d > 0);",
        "   return s;",
        "}",
        "",
        "int main ()",
        "{",
        "   sockserv socket_server(0);",
        "   char host[256];",
        "   string command;",
        "   string buffer;",
        "   string reply;",
        "   int length;",
        "   int entier = 0;",
        "   cerr << \"allocated port number is \" << socket_server.portnumber() << endl;",
        "   host[255] = '\\0';",
        "   gethostname(host, 255);",
        "   command = string(\"mosk \") + application + \" \" + host + \" \" + unsint2s(socket_server.portnumber()) + \" &\";",
        "   system(command.c_str());",
        "   socket_server.accept_connection();",
        "   cerr << \"SOCKET accepted ...\" << endl;",
        "   ioctl(socket_server.fd(),FIONBIO,&entier);",
        "   while (1)",
        "   {",
        "      length = socket_server.read(buffer);",
        "      cerr << \"reading SOCKET ...\" << endl;",
        "      if (length > 0)",
        "      {",
        "         cerr << \"BUFFER RECEIVED:\" << buffer << endl;",
        "         reply = compute_data_value(buffer);",
        "         cerr << \"TRANSMIT:\" << reply << endl;",
        "         socket_server.write(reply);",
        "      }",
        "      if (length == 0)",
        "         exit(0);",
        "   }",
        "   return 0;",
        "}",
    };
}

} // namespace

void Module::SIMUL_ZKC_put(std::ostream& os)
{
    os << "#include <iostream>\n"
       << "#include <vector>\n"
       << "#include <string>\n"
       << "#include <sys/ioctl.h>\n";
    for (const std::string& t : typeNames())
        os << "#include \"mosk_data_user_" << t << ".h\"\n";
    os << "\n"
       << "#define application \"" << name << ".zkc\"\n";
    SIMUL_ZKC_put_predef_func(os);
    put_compute_data_value(os);
    for (const std::string& line : socketServer())
        os << line << "\n";
}
