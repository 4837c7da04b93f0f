#pragma once

class CoachService;
class RateLimits;
class Router;
class Sessions;

/// POST /api/ai/suggestions, for whoever is signed in. All of them outlive the router's last answer.
void addCoachRoutes(Router &router, Sessions &sessions, RateLimits &limits, CoachService &coach);
