// The style sheet of the report: report.css, compiled into the command.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_REPORTSTYLE_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_REPORTSTYLE_H

extern char const kReportStyle[];

#endif
