/* Dates of HTTP headers (RFC 9110 section 5.6.7), independent of locale and time zone. */
#include "server/http_conn.h"

#include <stdio.h>
#include <string.h>
#include <time.h>

const char month_names[12][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

void print_http_date(time_t t, char out[MG_DATE_SIZE]) {
  static const char day_names[7][4] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  struct tm tm = {};
  if (gmtime_r(&t, &tm) == nullptr) { /* a year that no int holds */
    t = 0;
    gmtime_r(&t, &tm);
  }
  snprintf(out, MG_DATE_SIZE, "%s, %02d %s %d %02d:%02d:%02d GMT", day_names[tm.tm_wday], tm.tm_mday,
           month_names[tm.tm_mon], tm.tm_year + 1900, tm.tm_hour, tm.tm_min, tm.tm_sec);
}

/* --- Reading ------------------------------------------------------------------------------------------- */

/* The forms that are understood, in the notation of scanf: day, month's name, year, hour, minute, second. "w"
 * stands for a word of up to three characters that says nothing. What follows the second is not looked at.
 */
static const char *const forms[] = {
    "d/m/d d:d:d",
    "d m d d:d:d",
    "w, d m d d:d:d",
    "d-m-d d:d:d",
};

static bool is_blank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

static void skip_blanks(const char **text) {
  while (is_blank(**text)) (*text)++;
}

/* A number of up to nine digits, which is more than any date has. */
static bool read_number(const char **text, int *number) {
  skip_blanks(text);
  const size_t digits = strspn(*text, "0123456789");
  if (digits == 0 || digits > 9) return false;
  *number = 0;
  for (size_t i = 0; i < digits; i++) *number = 10 * *number + (*text)[i] - '0';
  *text += digits;
  return true;
}

static void read_word(const char **text, char word[4]) {
  skip_blanks(text);
  size_t n = 0;
  while (n < 3 && **text != '\0' && !is_blank(**text)) word[n++] = *(*text)++;
  word[n] = '\0';
}

static int month_of(const char *name) {
  for (int i = 0; i < 12; i++) {
    if (strcmp(month_names[i], name) == 0) return i;
  }
  return -1;
}

/* The numbers of a date in the order in which all forms have them. */
struct date_fields {
  int numbers[5]; /* day, year, hour, minute, second */
  char month[4];
};

static bool read_form(const char *form, const char *text, struct date_fields *fields) {
  int count = 0;
  for (; *form != '\0'; form++) {
    char ignored[4];
    if (*form == 'd') {
      if (!read_number(&text, &fields->numbers[count++])) return false;
    } else if (*form == 'm') {
      read_word(&text, fields->month);
    } else if (*form == 'w') {
      read_word(&text, ignored);
    } else if (*form == ' ') {
      skip_blanks(&text);
    } else if (*text++ != *form) {
      return false;
    }
  }
  return true;
}

/* A year of two digits is that of the century that begins in 1970. */
static int full_year(int year) {
  if (year >= 100) return year;
  return year < 70 ? year + 2000 : year + 1900;
}

/* The time of a date; 0 for a day or time of day that does not exist. */
static time_t time_of(const struct date_fields *fields) {
  const int day = fields->numbers[0], year = full_year(fields->numbers[1]);
  const int hour = fields->numbers[2], minute = fields->numbers[3], second = fields->numbers[4];
  const int month = month_of(fields->month);
  if (month < 0 || year < 1970 || year > 9999) return 0;
  if (hour > 23 || minute > 59 || second > 60) return 0; /* 60: a leap second */
  struct tm tm = {};
  tm.tm_mday = day;
  tm.tm_mon = month;
  tm.tm_year = year - 1900;
  const time_t midnight = timegm(&tm);
  const bool exists = tm.tm_mday == day && tm.tm_mon == month; /* timegm() makes March of 30 February */
  return exists ? midnight + 3600L * hour + 60L * minute + second : 0;
}

time_t parse_http_date(const char *text) {
  for (const char *form : forms) {
    struct date_fields fields = {};
    if (read_form(form, text, &fields)) return time_of(&fields);
  }
  return 0;
}
