#!/usr/bin/perl
# Writes the event log tests/fixtures/demo-root/logevt.rgt, always with the same bytes: March 2005 at a UPS with an old
# battery, near power lines that fail in thunderstorms. Usage: tools/make_demo_log.pl >
# tests/fixtures/demo-root/logevt.rgt
#
# A record is 68 bytes: the time stamp, the code, and a text padded with zeros (zelvane-log(5)). The codes are specific
# to this log: 1 mains failed, 2 mains back, 3 battery low, 4 shutdown, 5 start, 6 test begins, 7 test ends, 8 line to
# the UPS lost, 9 line back.
use strict;
use warnings;

binmode STDOUT;
my $midnight = 1109635200;    # 2005-03-01 00:00:00
my $seed = 2005;

# An integer below $n. Uses its own generator, because perl's can change with the version.
sub below {
  my ($n) = @_;
  $seed = ($seed * 1103515245 + 12345) % 2147483648;
  return int($seed / 65536) % $n;
}

my $last = 0;

sub event {
  my ($when, $code, $text) = @_;
  die "out of order: $text" if $when < $last;
  $last = $when;
  print pack('l< v a62', $when, $code, $text);
}

# Adds a failure that begins at $when, and its end. After ten minutes the battery is low and the computer shuts down.
sub failure {
  my ($when, $seconds) = @_;
  event($when, 1, sprintf('Mains failed, %d V', 20 + below(60)));
  if ($seconds > 600) {
    event($when + 600, 3, sprintf("Battery low, 10.%d V, %d \xB0C", 1 + below(8), 27 + below(6)));
    event($when + 660, 4, 'Shutdown of zeus ordered');
  }
  event($when + $seconds, 2, sprintf('Mains back, %d V, after %d s', 122 + below(9), $seconds));
  event($when + $seconds + 95, 5, 'Service started') if $seconds > 600;
  return $when + $seconds + 120;
}

my %storm = (4 => 5, 5 => 2, 17 => 9, 18 => 3, 26 => 1);    # day => failures
event($midnight + 27071, 5, 'Service started');
for my $day (1 .. 31) {
  my $start = $midnight + ($day - 1) * 86400;
  # Saturdays before dawn.
  if ($day % 7 == 5) {
    event($start + 10800, 6, 'Scheduled test begins');
    event($start + 10830 + below(40), 7, sprintf('Scheduled test passed, battery at %d %%', 62 + below(9)));
  }
  my $at = $start + 46800;                                  # storms are in the afternoon
  for (1 .. ($storm{$day} || (below(6) == 0 ? 1 : 0))) {
    $at += 120 + below(3600);
    $at = failure($at, below(5) == 0 ? 500 + below(2500) : 3 + below(170));
  }
  if ($day == 22) {
    event($start + 72000, 8, 'Line to the UPS lost');
    event($start + 75663, 9, 'Line to the UPS back');
  }
}
