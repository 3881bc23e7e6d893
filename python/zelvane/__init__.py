"""The common runtime library of the Zelvane programs, which watch uninterruptible power supplies (UPS).

Settings    Config, Section, ups_settings, shutdown_settings, client_settings, installation, root, set_root
Lists       servers, units, ups_types, model_name, capabilities, serial_ports, BrowseList
Logs        EventLog, TextLog, Schedule
Texts       Language, LanguageFile
System      processes, services, Service, already_running, os_version
Encoding    b64encode, b64decode, encode_password, decode_password, RipeMD256, Cipher

Texts are str, Latin-1 in the files; other characters raise UnicodeEncodeError. Times are naive datetimes of local time,
from 1970 to 2038-01-19. Failures of the system raise OSError (FileNotFoundError ...), those of a settings file
ConfigError, all others Error. Threads may share an object: one works, the others wait. Only a BrowseList is for one
thread at a time. Other Python threads run while the library works.
"""
from ._browse import BrowseList, Computer, Group, Unit
from ._config import Config, Section
from ._errors import ConfigError, Error
from ._zelvane import (
    Cipher, ClientSettings, Event, EventLog, Installation, Language, LanguageFile, Process, Records, RipeMD256,
    Schedule, Server, Service, ShutdownSettings, TextLog, UpsSettings, UpsType, __version__, add_server, add_unit,
    already_running, b64decode, b64encode, capabilities, clear_servers, client_settings, decode_password,
    encode_password, installation, model_name, os_version, processes, remove_server, remove_unit, root, serial_ports,
    servers, services, set_root, shutdown_settings, units, ups_settings, ups_types,
)

__all__ = [
    "BrowseList", "Cipher", "ClientSettings", "Computer", "Config", "ConfigError", "Error", "Event", "EventLog",
    "Group", "Installation", "Language", "LanguageFile", "Process", "Records", "RipeMD256", "Schedule", "Section",
    "Server", "Service", "ShutdownSettings", "TextLog", "Unit", "UpsSettings", "UpsType", "add_server", "add_unit",
    "already_running", "b64decode", "b64encode", "capabilities", "clear_servers", "client_settings",
    "decode_password", "encode_password", "installation", "model_name", "os_version", "processes", "remove_server",
    "remove_unit", "root", "serial_ports", "servers", "services", "set_root", "shutdown_settings", "units",
    "ups_settings", "ups_types",
]

for _name in __all__:
    globals()[_name].__module__ = __name__  # the public name, also in help() and messages
