#include <iostream>
#include <vector>
#include <string>
#include <sys/ioctl.h>
#include "mosk_data_user_integer.h"

#define application "peak.zkc"
using namespace std;

/* TYPE RELATED FUNCTIONS  */
/*=======================*/

/* Check Type */ 
bool check_type (string type, string arg)
{
   bool result=false;
   if (type ==  "integer")
   {
      result=check_integer(arg);
   }
   return result; 
}

/* string to bool conversion */
bool string_to_bool (string s)
{
   return s == "true";
}

/* Binary Operators */ 
string binop_plus (string type, string arg1, string arg2)
{
   string result=string("--");
   if (type ==  "integer")
   {
      result= integer_to_string(string_to_integer(arg1) + string_to_integer(arg2));
   }
   return result;
}

string binop_minus (string type, string arg1, string arg2)
{
   string result=string("--");
   if (type ==  "integer")
   {
      result= integer_to_string(string_to_integer(arg1) - string_to_integer(arg2));
   }
   return result;
}

string binop_mult (string type, string arg1, string arg2)
{
   string result=string("--");
   if (type ==  "integer")
   {
      result= integer_to_string(string_to_integer(arg1) * string_to_integer(arg2));
   }
   return result;
}

string binop_div (string type, string arg1, string arg2)
{
   string result=string("--");
   if (type ==  "integer")
   {
      result= integer_to_string(string_to_integer(arg1) / string_to_integer(arg2));
   }
   return result;
}

bool binop_equal (string type, string arg1, string arg2)
{
   bool result=false;
   if (type ==  "integer")
   {
      result=  string_to_integer(arg1) ==  string_to_integer(arg2);
   }
   return result;
}

bool binop_notequal (string type, string arg1, string arg2)
{
   bool result=false;
   if (type ==  "integer")
   {
      result=  string_to_integer(arg1) !=  string_to_integer(arg2);
   }
   return result;
}

bool binop_inf (string type, string arg1, string arg2)
{
   bool result=false;
   if (type ==  "integer")
   {
      result= string_to_integer(arg1) <  string_to_integer(arg2);
   }
   return result;
}

bool binop_infe (string type, string arg1, string arg2)
{
   bool result=false;
   if (type ==  "integer")
   {
      result= string_to_integer(arg1) <=  string_to_integer(arg2);
   }
   return result;
}

bool binop_sup (string type, string arg1, string arg2)
{
   bool result=false;
   if (type ==  "integer")
   {
      result= string_to_integer(arg1) >  string_to_integer(arg2);
   }
   return result;
}

bool binop_supe (string type, string arg1, string arg2)
{
   bool result=false;
   if (type ==  "integer")
   {
      result= string_to_integer(arg1) >=  string_to_integer(arg2);
   }
   return result;
}

string compute_data_value(const string & param)
{
   int n,l;
   string data,tmp;
   vector<string> v;
   n = 0;
   l = param.length();
   tmp = string("");
   while (n < l)
   {
      if (param[n] == ',')
      {
         v.push_back(tmp);
         tmp = string("");
      }
      else
         tmp = tmp + param[n];
      n++;
   }
   while (v.size() < 6)
      v.push_back(string(""));
   //  METHOD CALL
   if (v[0] == "MC")
   {
      if (v[1] == "bump")
      { 
         if (check_integer(v[2]) && check_integer(v[3]))
            data = integer_to_string(bump(string_to_integer(v[2]), string_to_integer(v[3])));
            else
                 data = string("--");
      }
   }
   //BINARY OP
   if (v[0] == "BOP")
   {
      if (v[2] != v[5])
      {
         cerr << "Error: Binary operator with arguments not having the same type" << endl;
         data = string("--");
      }
      else if (check_type(v[2], v[1]) && check_type(v[2], v[4]))
      {
         if (v[3] == " + ")
            data = binop_plus(v[2], v[1], v[4]);
         else if (v[3] == " - ")
            data = binop_minus(v[2], v[1], v[4]);
         else if (v[3] == " * ")
            data = binop_mult(v[2], v[1], v[4]);
         else if (v[3] == " / ")
            data = binop_div(v[2], v[1], v[4]);
         else if (v[3] == " && ")
            data = (string_to_bool(v[2]) && string_to_bool(v[4])) ? string("true") : string("false");
         else if (v[3] == " | ")
            data = (string_to_bool(v[1]) | string_to_bool(v[4])) ? string("true") : string("false");
         else if (v[3] == " == ")
            data = (binop_equal(v[2], v[1], v[4])) ? string("true") : string("false");
         else if (v[3] == " != ")
            data = (binop_notequal(v[2], v[1], v[4])) ? string("true") : string("false");
         else if (v[3] == " < ")
            data = (binop_inf(v[2], v[1], v[4])) ? string("true") : string("false");
         else if (v[3] == " <= ")
            data = (binop_infe(v[2], v[1], v[4])) ? string("true") : string("false");
         else if (v[3] == " > ")
            data = (binop_sup(v[2], v[1], v[4])) ? string("true") : string("false");
         else if (v[3] == " >= ")
            data = (binop_supe(v[2], v[1], v[4])) ? string("true") : string("false");
         else
         {
            cerr << "Error: SIMUL_ZKC:unknown binary operator" << endl;
            data = string("--");
         }
      }
      else
         data = string("--");
   }
   //UNARY OP
   if (v[0] == "UOP")
   {
      if (check_type(v[3], v[2]))
      {
         if (v[1] == " -")
            data = string(" -") + v[2];
         else if (v[1] == " !")
            data = string_to_bool(v[2]) ? string("false") : string("true");
         else
         {
            cerr << "Error: SIMUL_ZKC:unknown unary operator" << endl;
            data = string("--");
         }
      }
      else
         data = string("--");
   }
   //CONSTANTS
   if (v[0] == "CONST")
   {
      if (v[1] == "offset")
       {
           data = integer_to_string(offset);
       }
   }
   return data;
}

#define MOSK_BUFFER_RECEPT_LENGTH 1024

class sockserv
{
protected:
   void init(void);
   unsigned internal_portnumber;
   char * internal_hostname;
   char * internal_hostip;
   int internal_fd;
public:
   sockserv(unsigned portnum);
   unsigned accept_connection(void);
   int read (string & buffer);
   int write (const string & buffer);
   unsigned portnumber(void) { return internal_portnumber; }
   char * hostname(void) { return internal_hostname; }
   char * hostip(void) { return internal_hostip; }
   int fd(void) { return internal_fd; }
};

#ifdef WIN32
#include <winsock.h>
#include <io.h>
typedef int socklen_t;
#define MOSK_BAD_SOCKET(s) ((s) == INVALID_SOCKET)
#else
#include <sys/types.h>
#include <sys/socket.h>
#include <netinet/in.h>
#include <arpa/inet.h>
#include <netdb.h>
#include <unistd.h>
#include <string.h>
#include <stdlib.h>
#define MOSK_BAD_SOCKET(s) ((s) < 0)
#endif

sockserv::sockserv(unsigned portnum)
{
   struct sockaddr_in address;
   socklen_t length;
   int s;
   init();
   internal_portnumber = portnum;
   internal_hostname = NULL;
   internal_hostip = NULL;
   s = socket (AF_INET, SOCK_STREAM, 0);
   if (MOSK_BAD_SOCKET(s))
   {
      cerr << "Cannot create socket" << endl;
      exit(1);
   }
   memset(&address, 0, sizeof(address));
   address.sin_family = AF_INET;
   address.sin_addr.s_addr = htonl(INADDR_ANY);
   address.sin_port = htons(portnum);
   if (bind (s, (struct sockaddr *) &address, sizeof(address)) < 0)
   {
      cerr << "cannot create socket" << endl;
      exit(1);
   }
   length = sizeof(address);
   if (getsockname (s, (struct sockaddr *) &address, &length) < 0)
   {
      cerr << "cannot create socket" << endl;
      exit(1);
   }
   internal_portnumber = ntohs(address.sin_port);
   if (listen (s, 5) < 0)
   {
      cerr << "cannot create socket" << endl;
      exit(1);
   }
   internal_fd = s;
}

unsigned sockserv::accept_connection(void)
{
   struct sockaddr_in address;
   socklen_t length = sizeof(address);
   struct hostent * host;
   int s;
   s = accept (internal_fd, (struct sockaddr *) &address, &length);
   if (MOSK_BAD_SOCKET(s))
   {
      cerr << "unable to make connexion" << endl;
      return 0;
   }
   internal_hostip = strdup(inet_ntoa(address.sin_addr));
   host = gethostbyaddr ((char *) &address.sin_addr, sizeof(address.sin_addr), AF_INET);
   if (host != NULL)
      internal_hostname = strdup(host->h_name);
   else
      internal_hostname = strdup(internal_hostip);
   internal_fd = s;
   return s;
}

int sockserv::read (string & buffer)
{
   char received[MOSK_BUFFER_RECEPT_LENGTH];
   int length;
   length = recv (internal_fd, received, MOSK_BUFFER_RECEPT_LENGTH - 1, 0);
   if (length < 0)
   {
      buffer = string("");
      return length;
   }
   received[length] = '\0';
   buffer = string(received);
   return length;
}

int sockserv::write (const string & buffer)
{
   return send (internal_fd, buffer.c_str(), buffer.length(), 0);
}

void sockserv::init(void)
{
#ifdef WIN32
   WSADATA wsadata;
   WSAStartup(MAKEWORD(1,1), &wsadata);
#if 0
   if (LOBYTE(wsadata.wVersion) != 1 || HIBYTE(wsadata.wVersion) != 1)
   {
      cerr << "no usable winsock" << endl;
      WSACleanup();
   }
#endif
#endif
}

string unsint2s(unsigned d)
{
   string s;
   do
   {
      s = char('0' + d % 10) + s;
      d = d / 10;
   }
   while (d > 0);
   return s;
}

int main ()
{
   sockserv socket_server(0);
   char host[256];
   string command;
   string buffer;
   string reply;
   int length;
   int entier = 0;
   cerr << "allocated port number is " << socket_server.portnumber() << endl;
   host[255] = '\0';
   gethostname(host, 255);
   command = string("mosk ") + application + " " + host + " " + unsint2s(socket_server.portnumber()) + " &";
   system(command.c_str());
   socket_server.accept_connection();
   cerr << "SOCKET accepted ..." << endl;
   ioctl(socket_server.fd(),FIONBIO,&entier);
   while (1)
   {
      length = socket_server.read(buffer);
      cerr << "reading SOCKET ..." << endl;
      if (length > 0)
      {
         cerr << "BUFFER RECEIVED:" << buffer << endl;
         reply = compute_data_value(buffer);
         cerr << "TRANSMIT:" << reply << endl;
         socket_server.write(reply);
      }
      if (length == 0)
         exit(0);
   }
   return 0;
}
