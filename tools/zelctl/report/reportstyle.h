// The style sheet of the report: report.css, as the build has put it into the command.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_REPORTSTYLE_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_REPORTSTYLE_H

extern char const kReportStyle[];

#endif
